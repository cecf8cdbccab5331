// The preview's picture pixel by pixel, and where it stands at every zoom.
#include <atomic>
#include <cmath>
#include <cstring>

#include "support/DialogTest.h"

namespace mv::windowstest {
namespace {

constexpr int kZoomIn = 1005;
constexpr int kZoomOut = 1006;
constexpr int kHideHandle = 1082;

// What the host was last given to display.
struct Displayed {
    std::atomic<bool> hold{false};
    std::atomic<bool> held{false};
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    const std::uint8_t* At(int x, int y) const {
        return pixels.data() + static_cast<std::size_t>(y * width + x) * 3;
    }
} displayed;

hostapi::OSErr Display(const hostapi::PSPixelMap* map, const hostapi::VRect*, std::int32_t,
                       std::int32_t, void*) {
    displayed.width = map->bounds.right;
    displayed.height = map->bounds.bottom;
    const auto* first = static_cast<const std::uint8_t*>(map->baseAddr);
    displayed.pixels.assign(
        first, first + static_cast<std::size_t>(displayed.width * displayed.height) * 3);
    while (displayed.hold) {
        displayed.held = true;
        Sleep(1);
    }
    return hostapi::noErr;
}

// The arithmetic of the view, as a second plain formula: one axis of the picture.
struct Axis {
    bool vertical = false;
    int frame = 0;
    int image = 0;
    int picture = 0;  // pixels that the host delivered
    int offset = 0;

    // The offset when the step goes from one display scale to another.
    void Zoom(double oldScale, double newScale, int newPicture) {
        int centre = picture / 2;
        if (frame < 1 / oldScale * picture) {
            centre = static_cast<int>(frame * oldScale * 0.5 + offset);
        }
        const double moved =
            newPicture == picture ? centre : centre * (static_cast<double>(newPicture) / picture);
        offset = static_cast<int>(moved - newScale * 0.5 * frame);
        picture = newPicture;
        Clamp(newScale);
    }
    void Pan(int pixels, double scale) {
        offset -= static_cast<int>(pixels * scale);
        Clamp(scale);
    }
    void Clamp(double scale) {
        offset = std::min(offset, picture - static_cast<int>(frame * scale));
        offset = std::max(offset, 0);
    }
    // The image coordinate at so many screen pixels from the frame's start, as the title has it.
    double Title(int pixel, double scale, int step) const {
        const int shown = static_cast<int>(picture * (1 / scale) + 0.5);
        double at = pixel;
        if (shown < frame) {
            at -= (frame - shown) / 2;
        } else if (vertical) {
            at += shown - static_cast<int>(offset / scale) - frame;
        } else {
            at += static_cast<int>(offset / scale);
        }
        const double size = step > 0 ? picture * step : picture;
        return static_cast<int>(size * (at / shown) * 10) * 0.1;
    }
};

class View : public DialogTest {
protected:
    void StorePlace(int width = 400, int height = 400) {
        PutNumber("Preview Position X", 400);
        PutNumber("Preview Position Y", 20);
        PutNumber("Preview Position Width", static_cast<std::uint32_t>(width));
        PutNumber("Preview Position Height", static_cast<std::uint32_t>(height));
    }

    void OpenDisplayed(host::HostDocument document) {
        StorePlace();
        displayed.hold = false;
        displayed.held = false;
        displayed.pixels.clear();
        Prepare(std::move(document));
        run->Session().Record().displayPixels = Display;
        Open();
    }

    void Repaint() {
        InvalidateRect(run->Preview(), nullptr, FALSE);
        user->Settle();
    }

    double TitleX() { return Title(0); }
    double TitleY() { return Title(1); }
    double Title(int which) {
        double values[2] = {-1e9, -1e9};
        const std::string title = user->PreviewTitle();
        EXPECT_EQ(std::sscanf(title.c_str(), "Preview:  x: %lf y: %lf", &values[0], &values[1]), 2)
            << title;
        return values[which];
    }
};

// A sample of the output in hand, on a scale of 0 to 255.
double Sample(const hostapi::FilterRecord& record, int x, int y, int plane, double& alpha) {
    const auto* row = static_cast<const std::uint8_t*>(record.outData) + y * record.outRowBytes;
    const int at = x * record.planes + plane;
    if (record.depth == 32) {
        float value = 0;
        std::memcpy(&value, row + at * 4, 4);
        alpha = static_cast<double>(value);
        return std::min(static_cast<double>(value) * 255.0, 255.0);
    }
    if (record.depth == 16) {
        std::uint16_t value = 0;
        std::memcpy(&value, row + at * 2, 2);
        alpha = value * 3.051850947599719e-05;
        return value * 0.007782101;
    }
    alpha = row[at] * 0.00392156862745098;
    return row[at];
}

// Bytes that differ by more than `slack` from what the record's output means.
int WrongBytes(const hostapi::FilterRecord& record, bool hasAlpha, int colors, int slack) {
    const int width = record.outRect.right - record.outRect.left;
    const int height = record.outRect.bottom - record.outRect.top;
    int wrong = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            double alpha = 0;
            double values[3];
            for (int i = 0; i < 3; ++i) {
                const int plane = colors == 1 ? 0 : colors == 2 ? 1 - i : i;
                values[i] = plane < 0 ? 0 : Sample(record, x, y, plane, alpha);
            }
            if (hasAlpha) {
                Sample(record, x, y, colors, alpha);
                const int column = x * record.imageSize.h / width / 16;
                const int row = y * record.imageSize.v / height / 16;
                const double gray = column % 2 + row % 2 == 1 ? 255 : 208;
                for (double& value : values) {
                    value = (value - gray) * alpha + gray;
                }
            }
            for (int i = 0; i < 3; ++i) {
                const int shown = displayed.At(x, y)[i];
                wrong += std::abs(shown - static_cast<int>(values[i])) > slack ? 1 : 0;
            }
        }
    }
    return wrong;
}

struct Shape {
    int colors;
    bool alpha;
    int depth;
};

class ViewOfShape : public View, public testing::WithParamInterface<Shape> {};

TEST_P(ViewOfShape, ShowsTheOutputOverSquaresOfTheFullImage) {
    const Shape shape = GetParam();
    const int planes = shape.colors + (shape.alpha ? 1 : 0);
    host::HostImage image = DrawPicture(500, 330, planes, shape.depth);
    const double white = shape.depth == 8 ? 255.0 : shape.depth == 16 ? 32768.0 : 1.0;
    for (int y = 0; shape.alpha && y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            image.Set(x, y, shape.colors, white * ((x * 3 + y) % 200) / 199.0);
        }
    }
    OpenDisplayed(shape.colors == 2 ? host::MakeMultichannelDocument(std::move(image))
                                    : host::MakeDocument(std::move(image), shape.alpha));
    for (const char* zoom : {"50%", "100%"}) {
        EXPECT_EQ(user->Text(1007), zoom);
        Repaint();
        const hostapi::FilterRecord& record = run->Session().Record();
        ASSERT_EQ(displayed.height, record.outRect.bottom);
        ASSERT_EQ(displayed.width, (record.outRect.right / 32 + 1) * 32);
        // The module may reckon in another order; a truncated byte then is one beside.
        EXPECT_EQ(WrongBytes(record, shape.alpha, shape.colors, 1), 0) << zoom;
        EXPECT_LT(WrongBytes(record, shape.alpha, shape.colors, 0), 100) << zoom;
        user->Click(kZoomIn);
    }
    ASSERT_TRUE(user->PressCancel());
}

INSTANTIATE_TEST_SUITE_P(Shapes, ViewOfShape,
                         testing::Values(Shape{1, false, 8}, Shape{1, true, 8}, Shape{3, true, 8},
                                         Shape{2, false, 8}, Shape{1, true, 16}, Shape{3, true, 16},
                                         Shape{1, false, 32}, Shape{3, true, 32}));

TEST_F(View, ABufferIsWiderThanItsPictureAndAMultipleOfThirtyTwo) {
    for (const auto& [width, buffer] : {std::pair(64, 96), std::pair(65, 96), std::pair(31, 32)}) {
        OpenDisplayed(ColorDocument(width, 20));
        EXPECT_EQ(displayed.width, buffer);
        EXPECT_EQ(displayed.height, 20);
        ASSERT_TRUE(user->PressCancel());
    }
}

TEST_F(View, AMagnifiedPixelIsASquare) {
    StorePlace();
    Open(120, 90);
    user->Click(kHideHandle);
    user->Click(kZoomIn);
    user->Click(kZoomIn);
    ASSERT_EQ(user->Text(1007), "200%");
    const Shot shot = user->ShootPreview();
    const RECT frame = user->FrameRect();
    const int left = frame.left + (frame.right - frame.left - 240) / 2;
    const int top = frame.top + (frame.bottom - frame.top - 180) / 2;
    EXPECT_EQ(shot.At(left - 1, top), RGB(0xBB, 0xBB, 0xBB));
    EXPECT_EQ(shot.At(left + 240, top + 179), RGB(0xBB, 0xBB, 0xBB));
    ASSERT_TRUE(user->PressOk());
    const host::HostImage& result = run->Session().Result();
    int wrong = 0;
    for (int y = 0; y < 180; ++y) {
        for (int x = 0; x < 240; ++x) {
            const COLORREF expected = RGB(static_cast<int>(result.Get(x / 2, y / 2, 0)),
                                          static_cast<int>(result.Get(x / 2, y / 2, 1)),
                                          static_cast<int>(result.Get(x / 2, y / 2, 2)));
            wrong += shot.At(left + x, top + y) == expected ? 0 : 1;
        }
    }
    EXPECT_EQ(wrong, 0);
}

TEST_F(View, ZoomsKeepTheMiddleAndPansFollowTheMouse) {
    StorePlace(420, 350);
    Open(1200, 810);
    const RECT frame = user->FrameRect();
    Axis x = {false, static_cast<int>(frame.right - frame.left), 1200, 400, 0};
    Axis y = {true, static_cast<int>(frame.bottom - frame.top), 810, 270, 0};
    ASSERT_EQ(user->Text(1007), "33.33%");
    int step = 3;
    const auto scale = [&] { return step >= 1 ? 1.0 : 1.5 / (2 - step); };
    // In, in, pan, in, in, pan, out, ..., with the mouse's way for the pans.
    const struct {
        int zoom;
        POINT pan;
    } moves[] = {{-1, {}},       {-1, {}},        {0, {57, -31}}, {-1, {}}, {-1, {}},
                 {0, {-45, 77}}, {-1, {}},        {1, {}},        {1, {}},  {1, {}},
                 {1, {}},        {0, {-2000, 3}}, {1, {}},        {-1, {}}};
    for (const auto& move : moves) {
        const double oldScale = scale();
        if (move.zoom != 0) {
            step += move.zoom;
            user->Click(move.zoom < 0 ? kZoomIn : kZoomOut);
            const int factor = std::max(step, 1);
            x.Zoom(oldScale, scale(), 1200 / factor);
            y.Zoom(oldScale, scale(), 810 / factor);
        } else {
            const POINT from = user->FrameMiddle();
            const POINT to = {from.x + move.pan.x, from.y + move.pan.y};
            user->PreviewMouse(WM_RBUTTONDOWN, from, MK_RBUTTON);
            user->PreviewMouse(WM_MOUSEMOVE, to, MK_RBUTTON);
            user->PreviewMouse(WM_RBUTTONUP, to);
            user->Settle();
            x.Pan(move.pan.x, scale());
            y.Pan(-move.pan.y, scale());
        }
        for (const int at : {0, 101}) {
            user->PreviewMouse(WM_MOUSEMOVE, {frame.left + at, frame.top + at});
            EXPECT_NEAR(TitleX(), x.Title(at, scale(), step), 0.001) << step << ' ' << at;
            EXPECT_NEAR(TitleY(), y.Title(at, scale(), step), 0.001) << step << ' ' << at;
        }
    }
    EXPECT_EQ(step, 2);
}

TEST_F(View, TheHandleFollowsZoomAndPan) {
    StorePlace();
    Open(300, 240);
    user->Click(kZoomIn);
    user->Click(kZoomIn);
    ASSERT_EQ(user->Text(1007), "200%");
    const RECT frame = user->FrameRect();
    const int frameWidth = frame.right - frame.left;
    const int frameHeight = frame.bottom - frame.top;
    user->PreviewMouse(WM_RBUTTONDOWN, {150, 150}, MK_RBUTTON);
    user->PreviewMouse(WM_MOUSEMOVE, {181, 122}, MK_RBUTTON);
    user->PreviewMouse(WM_RBUTTONUP, {181, 122});
    user->Settle();
    // The magnified picture is larger than the frame, so it begins in the frame's corner.
    Axis x = {false, frameWidth, 300, 300, 0};
    Axis y = {true, frameHeight, 240, 240, 0};
    for (const auto& [from, to] : {std::pair(1.0, 0.75), std::pair(0.75, 0.5)}) {
        x.Zoom(from, to, 300);
        y.Zoom(from, to, 240);
    }
    x.Pan(31, 0.5);
    y.Pan(28, 0.5);
    const int centreX = static_cast<int>(frame.left - x.offset / 0.5 + 600 * 0.5);
    const int centreY =
        static_cast<int>(480 * 0.5 + frame.top - (480 - frameHeight) + y.offset / 0.5);
    const Shot shot = user->ShootPreview();
    EXPECT_EQ(shot.At(centreX, centreY - 1), RGB(0xEE, 0xEE, 0xEE));
    EXPECT_EQ(shot.At(centreX + 9, centreY), RGB(0x33, 0x33, 0x33));
    EXPECT_EQ(shot.At(centreX - 11, centreY + 4), RGB(0, 0, 0));
    EXPECT_EQ(shot.At(centreX + 4, centreY + 11), RGB(0, 0, 0));
    EXPECT_EQ(shot.At(centreX + 11, centreY - 11), RGB(0, 0, 0));
}

TEST_F(View, AClickBesideTheFrameDoesNothing) {
    StorePlace();
    Open(200, 100);
    const RECT frame = user->FrameRect();
    for (const POINT point : {POINT{frame.right, 50}, POINT{50, frame.bottom}, POINT{-1, 50},
                              POINT{frame.right + 30, frame.bottom + 30}}) {
        user->PreviewMouse(WM_LBUTTONDOWN, point, MK_LBUTTON);
        user->PreviewMouse(WM_MOUSEMOVE, {frame.left + 20, frame.top + 20}, MK_LBUTTON);
        user->PreviewMouse(WM_LBUTTONUP, point);
        user->PreviewMouse(WM_RBUTTONDOWN, point, MK_RBUTTON);
        user->PreviewMouse(WM_RBUTTONUP, point);
    }
    EXPECT_FALSE(user->Enabled(1004));
    EXPECT_EQ(user->Text(1031), "100");
    // Just inside it counts.
    user->PreviewMouse(WM_LBUTTONDOWN, {frame.right - 1, frame.bottom - 1}, MK_LBUTTON);
    user->PreviewMouse(WM_LBUTTONUP, {frame.right - 1, frame.bottom - 1});
    EXPECT_TRUE(user->Enabled(1004));
}

TEST_F(View, AnImageModeWithoutAPreviewLeavesThePlaceBlackAndTheDialogUsable) {
    StorePlace();
    host::HostDocument document = host::MakeDocument(DrawPicture(200, 100, 1), false);
    document.imageMode = 2;
    Prepare(std::move(document));
    Open();
    const RECT frame = user->FrameRect();
    const Shot shot = user->ShootPreview();
    EXPECT_EQ(
        shot.At((frame.left + frame.right - 200) / 2 + 3, (frame.top + frame.bottom - 100) / 2 + 3),
        RGB(0, 0, 0));
    user->Type(1028, "0.5");
    EXPECT_EQ(user->SliderPosition(1025), 50);
    EXPECT_TRUE(user->PressOk());
}

TEST_F(View, OkRightAfterAChangeShowsThatChangeBeforeTheWindowsGo) {
    OpenDisplayed(ColorDocument(200, 150));
    user->Focus(1028);
    SendMessageA(user->Control(1028), EM_SETSEL, 0, -1);
    user->Settle();
    Repaint();
    const std::vector<std::uint8_t> before = displayed.pixels;
    // While the dialog paints, a change and OK come into its queue together.
    displayed.hold = true;
    InvalidateRect(run->Preview(), nullptr, FALSE);
    ASSERT_TRUE(Eventually([] { return displayed.held.load(); }));
    for (const char c : std::string("0.9")) {
        PostMessageA(user->Control(1028), WM_CHAR, static_cast<WPARAM>(c), 1);
    }
    PostMessageA(run->Interface(), WM_COMMAND, IDOK, 0);
    displayed.hold = false;
    ASSERT_TRUE(run->Finish());
    EXPECT_EQ(run->Outcome().status, 0);
    EXPECT_DOUBLE_EQ(Number("STRE"), 0.9);
    EXPECT_NE(displayed.pixels, before);
    const host::HostImage& result = run->Session().Result();
    int wrong = 0;
    for (int y = 0; y < 150; ++y) {
        for (int x = 0; x < 200; ++x) {
            for (int plane = 0; plane < 3; ++plane) {
                wrong +=
                    displayed.At(x, y)[plane] == static_cast<int>(result.Get(x, y, plane)) ? 0 : 1;
            }
        }
    }
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace mv::windowstest
