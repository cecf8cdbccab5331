// The preview window: the picture, the handle, the mouse, the zoom, and what the host is asked.
#include <cmath>

#include "support/DialogTest.h"

namespace mv::windowstest {
namespace {

constexpr int kZoomIn = 1005;
constexpr int kZoomOut = 1006;
constexpr int kZoomText = 1007;
constexpr int kHideHandle = 1082;

class Preview : public DialogTest {
protected:
    // A preview of 400 by 400 at a place that hides nothing.
    void StorePlace(int width = 400, int height = 400) {
        PutNumber("Preview Position X", 400);
        PutNumber("Preview Position Y", 20);
        PutNumber("Preview Position Width", static_cast<std::uint32_t>(width));
        PutNumber("Preview Position Height", static_cast<std::uint32_t>(height));
        PutNumber("Interface Position X", 0);
        PutNumber("Interface Position Y", 0);
    }

    // Where the picture of this size stands when it fits.
    POINT PictureStart(int width, int height) const {
        const RECT frame = user->FrameRect();
        return {frame.left + (frame.right - frame.left - width) / 2,
                frame.top + (frame.bottom - frame.top - height) / 2};
    }

    // Pixels of the shot that differ from the picture, with its top left at the point given.
    static int Differences(const Shot& shot, const host::HostImage& picture, POINT start) {
        int differences = 0;
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x) {
                const COLORREF expected = RGB(static_cast<int>(picture.Get(x, y, 0)),
                                              static_cast<int>(picture.Get(x, y, 1)),
                                              static_cast<int>(picture.Get(x, y, 2)));
                differences += shot.At(start.x + x, start.y + y) == expected ? 0 : 1;
            }
        }
        return differences;
    }

    std::vector<int> Factors() {
        std::vector<int> factors;
        for (const AdvanceRequest& request : run->Requests()) {
            factors.push_back(request.inputRate >> 16);
        }
        return factors;
    }
};

TEST_F(Preview, ShowsWhatTheFinalRenderGives) {
    StorePlace();
    Open(200, 150);
    user->Click(kHideHandle);
    user->Type(1028, "0.6");
    user->Type(1031, "61");
    user->Type(1014, "0.3");
    user->Settle();
    const Shot shot = user->ShootPreview();
    const POINT start = PictureStart(200, 150);
    EXPECT_EQ(shot.At(start.x - 1, start.y), RGB(0xBB, 0xBB, 0xBB));
    EXPECT_EQ(shot.At(start.x + 200, start.y + 149), RGB(0xBB, 0xBB, 0xBB));
    EXPECT_EQ(shot.At(start.x, start.y - 1), RGB(0xBB, 0xBB, 0xBB));
    EXPECT_EQ(shot.At(start.x + 10, start.y + 150), RGB(0xBB, 0xBB, 0xBB));
    ASSERT_TRUE(user->PressOk());
    ASSERT_TRUE(run->Outcome().stored);
    EXPECT_EQ(Differences(shot, run->Session().Result(), start), 0);
    EXPECT_NE(Differences(shot, run->Session().Source(), start), 0);
}

TEST_F(Preview, TheSecondOpeningShowsThePictureToo) {
    StorePlace();
    for (int opening = 0; opening < 2; ++opening) {
        Open(200, 150);
        if (opening == 0) {
            user->Click(kHideHandle);
        }
        const Shot shot = user->ShootPreview();
        const POINT start = PictureStart(200, 150);
        ASSERT_TRUE(user->PressOk());
        EXPECT_EQ(Differences(shot, run->Session().Result(), start), 0) << opening;
        EXPECT_EQ(Factors(), (std::vector<int>{1, 1})) << opening;
    }
}

TEST_F(Preview, AsksTheHostForReducedPicturesAndOnceForTheWhole) {
    StorePlace();
    Open(1001, 503);
    EXPECT_EQ(user->Text(kZoomText), "33.33%");  // 1001 / 39x = 2, and one more
    user->Click(kZoomIn);
    EXPECT_EQ(user->Text(kZoomText), "50%");
    user->Click(kZoomIn);
    EXPECT_EQ(user->Text(kZoomText), "100%");
    user->Click(kZoomIn);
    EXPECT_EQ(user->Text(kZoomText), "133.3%");
    user->Click(kZoomIn);
    EXPECT_EQ(user->Text(kZoomText), "200%");
    user->Click(kZoomOut);
    user->Click(kZoomOut);
    user->Click(kZoomOut);
    EXPECT_EQ(user->Text(kZoomText), "50%");
    ASSERT_TRUE(user->PressOk());
    EXPECT_EQ(Factors(), (std::vector<int>{3, 2, 1, 2, 1}));
    const auto requests = run->Requests();
    EXPECT_EQ(requests[0].outRect.right, 333);
    EXPECT_EQ(requests[0].outRect.bottom, 167);
    EXPECT_EQ(requests[1].outRect.right, 500);
    EXPECT_EQ(requests[1].outRect.bottom, 251);
    EXPECT_EQ(requests[4].outRect.right, 1001);
}

TEST_F(Preview, AClickMovesTheHandleAndTheDragGoesOnInOneStep) {
    StorePlace();
    Open(200, 100);
    const POINT start = PictureStart(200, 100);
    user->PreviewMouse(WM_LBUTTONDOWN, {start.x + 50, start.y + 20}, MK_LBUTTON);
    EXPECT_EQ(user->Text(1031), "50");
    EXPECT_EQ(user->Text(1032), "20");
    EXPECT_TRUE(user->Enabled(1004));
    for (int i = 0; i <= 30; ++i) {
        user->PreviewMouse(WM_MOUSEMOVE, {start.x + 50 + i, start.y + 20 + i}, MK_LBUTTON);
    }
    user->PreviewMouse(WM_LBUTTONUP, {start.x + 80, start.y + 50});
    user->PreviewMouse(WM_MOUSEMOVE, {start.x + 10, start.y + 10});
    EXPECT_EQ(user->Text(1031), "80");
    EXPECT_EQ(user->Text(1032), "50");
    user->Click(1004);
    EXPECT_EQ(user->Text(1031), "100");
    EXPECT_FALSE(user->Enabled(1004));
    user->Click(1010);
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Number("ORIX"), 0.4);
    EXPECT_DOUBLE_EQ(Number("ORIY"), 0.5);
}

TEST_F(Preview, TheHandleMayBeDraggedBesideThePicture) {
    StorePlace();
    Open(200, 100);
    const POINT start = PictureStart(200, 100);
    user->PreviewMouse(WM_LBUTTONDOWN, {start.x - 20, start.y + 150}, MK_LBUTTON);
    user->PreviewMouse(WM_LBUTTONUP, {start.x - 20, start.y + 150});
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Number("ORIX"), -0.1);
    EXPECT_DOUBLE_EQ(Number("ORIY"), 1.5);
}

TEST_F(Preview, TheHandleIsDrawnAsNestedSquaresWithDiagonals) {
    StorePlace();
    Open(200, 100);
    const POINT start = PictureStart(200, 100);
    Shot shot = user->ShootPreview();
    const int x = start.x + 100;
    const int y = start.y + 50;
    const struct {
        int halfSize;
        COLORREF color;
    } squares[] = {{1, 0xEEEEEE}, {3, 0xBBBBBB}, {5, 0x999999},
                   {7, 0x666666}, {9, 0x333333}, {11, 0x000000}};
    for (const auto& square : squares) {
        EXPECT_EQ(shot.At(x, y - square.halfSize), square.color);
        EXPECT_EQ(shot.At(x, y + square.halfSize), square.color);
        EXPECT_EQ(shot.At(x - square.halfSize, y), square.color);
        EXPECT_EQ(shot.At(x + square.halfSize, y), square.color);
    }
    for (int i = -11; i <= 11; ++i) {
        EXPECT_EQ(shot.At(x + i, y + i), RGB(0, 0, 0));
        EXPECT_EQ(shot.At(x + i, y - i), RGB(0, 0, 0));
    }
    user->Click(kHideHandle);
    EXPECT_TRUE(user->Checked(kHideHandle));
    shot = user->ShootPreview();
    EXPECT_NE(shot.At(x, y - 1), COLORREF{0xEEEEEE});
}

TEST_F(Preview, TitleShowsTheImagePixelUnderTheMouseAtAnyZoom) {
    StorePlace();
    Open(200, 100);
    const POINT start = PictureStart(200, 100);
    user->PreviewMouse(WM_MOUSEMOVE, {start.x + 31, start.y + 7});
    EXPECT_EQ(user->PreviewTitle(), "Preview:  x: 31 y: 7");
    user->PreviewMouse(WM_MOUSEMOVE, {start.x - 3, start.y});
    EXPECT_EQ(user->PreviewTitle(), "Preview:  x: -3 y: 0");
    user->Click(kZoomIn);
    user->Click(kZoomIn);  // 200%
    const POINT magnified = PictureStart(400, 200);
    const RECT frame = user->FrameRect();
    if (frame.right - frame.left >= 400) {
        user->PreviewMouse(WM_MOUSEMOVE, {magnified.x + 31, magnified.y + 7});
        EXPECT_EQ(user->PreviewTitle(), "Preview:  x: 15.5 y: 3.5");
    } else {
        user->PreviewMouse(WM_MOUSEMOVE, {100, magnified.y + 7});
        EXPECT_EQ(user->PreviewTitle().substr(user->PreviewTitle().find(" y:")), " y: 3.5");
    }
}

TEST_F(Preview, TheRightButtonPansAndThePictureStaysUnderTheMouse) {
    StorePlace();
    Open(1000, 800);
    user->Click(kHideHandle);
    user->Click(kZoomIn);
    user->Click(kZoomIn);
    ASSERT_EQ(user->Text(kZoomText), "100%");
    user->Settle();
    const Shot before = user->ShootPreview();
    user->PreviewMouse(WM_RBUTTONDOWN, {200, 200}, MK_RBUTTON);
    user->PreviewMouse(WM_MOUSEMOVE, {170, 240}, MK_RBUTTON);
    user->PreviewMouse(WM_RBUTTONUP, {170, 240});
    user->Settle();
    const Shot after = user->ShootPreview();
    int differences = 0;
    for (int y = 60; y < 300; ++y) {
        for (int x = 60; x < 300; ++x) {
            differences += after.At(x - 30, y + 40) == before.At(x, y) ? 0 : 1;
        }
    }
    EXPECT_EQ(differences, 0);
    // The title says which pixel of the image stands in the corner of the frame.
    const RECT frame = user->FrameRect();
    user->PreviewMouse(WM_MOUSEMOVE, {frame.left, frame.top});
    int x = 0;
    int y = 0;
    ASSERT_EQ(std::sscanf(user->PreviewTitle().c_str(), "Preview:  x: %d y: %d", &x, &y), 2);
    EXPECT_GT(x, 200);
    EXPECT_GT(y, 100);
    ASSERT_TRUE(user->PressOk());
    const host::HostImage& result = run->Session().Result();
    differences = 0;
    for (int row = 0; row < 300; ++row) {
        for (int column = 0; column < 300; ++column) {
            const COLORREF expected = RGB(static_cast<int>(result.Get(x + column, y + row, 0)),
                                          static_cast<int>(result.Get(x + column, y + row, 1)),
                                          static_cast<int>(result.Get(x + column, y + row, 2)));
            differences += after.At(frame.left + column, frame.top + row) == expected ? 0 : 1;
        }
    }
    EXPECT_EQ(differences, 0);
    // One picture for each factor: panning and hiding the handle needed none.
    EXPECT_EQ(Factors(), (std::vector<int>{3, 2, 1, 1}));
}

TEST_F(Preview, PanningEndsAtThePicturesEdges) {
    StorePlace();
    Open(1000, 800);
    user->Click(kZoomIn);
    user->Click(kZoomIn);
    user->PreviewMouse(WM_RBUTTONDOWN, {200, 200}, MK_RBUTTON);
    user->PreviewMouse(WM_MOUSEMOVE, {20000, 20000}, MK_RBUTTON);
    user->PreviewMouse(WM_RBUTTONUP, {20000, 20000});
    user->Settle();
    const RECT frame = user->FrameRect();
    user->PreviewMouse(WM_MOUSEMOVE, {frame.left, frame.top});
    EXPECT_EQ(user->PreviewTitle(), "Preview:  x: 0 y: 0");
    user->PreviewMouse(WM_RBUTTONDOWN, {200, 200}, MK_RBUTTON);
    user->PreviewMouse(WM_MOUSEMOVE, {-20000, -20000}, MK_RBUTTON);
    user->PreviewMouse(WM_RBUTTONUP, {-20000, -20000});
    user->Settle();
    user->PreviewMouse(WM_MOUSEMOVE, {frame.right, frame.bottom});
    EXPECT_EQ(user->PreviewTitle(), "Preview:  x: 1000 y: 800");
}

TEST_F(Preview, CannotBeMadeSmallerThanAHundredPixels) {
    StorePlace();
    Open(60, 40);
    SetWindowPos(run->Preview(), nullptr, 0, 0, 40, 55, SWP_NOMOVE | SWP_NOZORDER);
    user->Settle();
    RECT rect = {};
    GetWindowRect(run->Preview(), &rect);
    EXPECT_GE(rect.right - rect.left, 100);
    EXPECT_GE(rect.bottom - rect.top, 100);
    SetWindowPos(run->Preview(), nullptr, 0, 0, 333, 222, SWP_NOMOVE | SWP_NOZORDER);
    user->Settle();
    const RECT frame = user->FrameRect();
    EXPECT_EQ(frame.right - frame.left, 333 - 2 * GetSystemMetrics(SM_CXFRAME));
    ShowWindow(run->Preview(), SW_MINIMIZE);
    user->Settle();
    ShowWindow(run->Preview(), SW_RESTORE);
    user->Settle();
    GetWindowRect(run->Preview(), &rect);
    EXPECT_EQ(rect.right - rect.left, 333);
    EXPECT_EQ(rect.bottom - rect.top, 222);
}

TEST_F(Preview, TransparencyShowsTheChecker) {
    StorePlace();
    host::HostImage image = DrawPicture(64, 48, 4);
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) {
            image.Set(x, y, 3, 0);
        }
    }
    Prepare(host::MakeDocument(image, true));
    Open();
    user->Click(kHideHandle);
    const Shot shot = user->ShootPreview();
    const POINT start = PictureStart(64, 48);
    EXPECT_EQ(shot.At(start.x, start.y), RGB(208, 208, 208));
    EXPECT_EQ(shot.At(start.x + 15, start.y + 15), RGB(208, 208, 208));
    EXPECT_EQ(shot.At(start.x + 16, start.y), RGB(255, 255, 255));
    EXPECT_EQ(shot.At(start.x, start.y + 16), RGB(255, 255, 255));
    EXPECT_EQ(shot.At(start.x + 17, start.y + 17), RGB(208, 208, 208));
}

TEST_F(Preview, OtherDepthsShowTheSamePicture) {
    for (const int depth : {16, 32}) {
        StorePlace();
        DialogRun::UnloadModule();
        Prepare(host::MakeDocument(DrawPicture(100, 70, 3, depth), false));
        Open();
        if (!user->Checked(kHideHandle)) {
            user->Click(kHideHandle);
        }
        const Shot shot = user->ShootPreview();
        const POINT start = PictureStart(100, 70);
        ASSERT_TRUE(user->PressOk());
        const host::HostImage& result = run->Session().Result();
        const double scale = depth == 16 ? 0.007782101 : 255.0;
        int differences = 0;
        for (int y = 0; y < 70; ++y) {
            for (int x = 0; x < 100; ++x) {
                const auto byte = [&](int plane) {
                    return static_cast<int>(std::min(result.Get(x, y, plane) * scale, 255.9));
                };
                differences +=
                    shot.At(start.x + x, start.y + y) == RGB(byte(0), byte(1), byte(2)) ? 0 : 1;
            }
        }
        EXPECT_EQ(differences, 0) << depth;
    }
}

struct HostDisplay {
    int calls = 0;
    hostapi::PSPixelMap map = {};
    hostapi::VRect source = {};
    bool fails = false;
} hostDisplay;

hostapi::OSErr DisplayPixels(const hostapi::PSPixelMap* map, const hostapi::VRect* source,
                             std::int32_t row, std::int32_t column, void* context) {
    ++hostDisplay.calls;
    hostDisplay.map = *map;
    hostDisplay.source = *source;
    if (hostDisplay.fails || row != 0 || column != 0) {
        return hostapi::filterBadParameters;
    }
    // A host with a colour management of its own: red is shown as if it were 64 brighter.
    const int width = map->bounds.right;
    const int height = map->bounds.bottom;
    std::vector<std::uint8_t> rows(static_cast<std::size_t>(width * height * 4));
    for (int y = 0; y < height; ++y) {
        const auto* pixel = static_cast<const std::uint8_t*>(map->baseAddr) + y * map->rowBytes;
        std::uint8_t* target = rows.data() + static_cast<std::size_t>(y * width * 4);
        for (int x = 0; x < width; ++x, pixel += map->colBytes, target += 4) {
            target[2] = static_cast<std::uint8_t>(std::min(pixel[0] + 64, 255));
            target[1] = pixel[map->planeBytes];
            target[0] = pixel[2 * map->planeBytes];
        }
    }
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    SetDIBitsToDevice(static_cast<HDC>(context), 0, 0, static_cast<DWORD>(width),
                      static_cast<DWORD>(height), 0, 0, 0, static_cast<UINT>(height), rows.data(),
                      &info, DIB_RGB_COLORS);
    return hostapi::noErr;
}

TEST_F(Preview, AHostThatDisplaysPixelsIsAskedTo) {
    hostDisplay = {};
    StorePlace();
    Prepare(ColorDocument(120, 90));
    run->Session().Record().displayPixels = DisplayPixels;
    Open();
    user->Click(kHideHandle);
    const Shot shot = user->ShootPreview();
    const POINT start = PictureStart(120, 90);
    ASSERT_TRUE(user->PressOk());
    const host::HostImage& result = run->Session().Result();
    int differences = 0;
    for (int y = 0; y < 90; ++y) {
        for (int x = 0; x < 120; ++x) {
            const COLORREF expected =
                RGB(std::min(static_cast<int>(result.Get(x, y, 0)) + 64, 255),
                    static_cast<int>(result.Get(x, y, 1)), static_cast<int>(result.Get(x, y, 2)));
            differences += shot.At(start.x + x, start.y + y) == expected ? 0 : 1;
        }
    }
    EXPECT_EQ(differences, 0);
    EXPECT_GT(hostDisplay.calls, 0);
    EXPECT_EQ(hostDisplay.map.version, 1);
    EXPECT_EQ(hostDisplay.map.imageMode, 3);
    EXPECT_EQ(hostDisplay.map.bounds.right, 128);  // 120 pixels in rows of a multiple of 32
    EXPECT_EQ(hostDisplay.map.bounds.bottom, 90);
    EXPECT_EQ(hostDisplay.map.rowBytes, 384);
    EXPECT_EQ(hostDisplay.map.colBytes, 3);
    EXPECT_EQ(hostDisplay.map.planeBytes, 1);
    EXPECT_EQ(hostDisplay.map.mat, nullptr);
    EXPECT_EQ(hostDisplay.map.masks, nullptr);
    EXPECT_EQ(hostDisplay.source.right, 128);
}

TEST_F(Preview, AHostThatFailsToDisplayStillHasAPicture) {
    hostDisplay = {};
    hostDisplay.fails = true;
    StorePlace();
    Prepare(ColorDocument(120, 90));
    run->Session().Record().displayPixels = DisplayPixels;
    Open();
    user->Click(kHideHandle);
    const Shot shot = user->ShootPreview();
    const POINT start = PictureStart(120, 90);
    ASSERT_TRUE(user->PressOk());
    EXPECT_EQ(Differences(shot, run->Session().Result(), start), 0);
}

TEST_F(Preview, AHostThatRefusesAPictureLeavesTheDialogUsable) {
    StorePlace();
    Prepare(ColorDocument(1000, 800));
    run->Session().Faults().failAdvanceAt = 2;
    Open();
    user->Click(kZoomIn);  // refused
    EXPECT_EQ(user->Text(kZoomText), "50%");
    user->Type(1028, "0.5");
    InvalidateRect(run->Preview(), nullptr, FALSE);
    user->Settle();
    EXPECT_EQ(user->ShootPreview().At(100, 200), RGB(0, 0, 0));
    user->Click(kZoomIn);
    EXPECT_NE(user->ShootPreview().At(100, 200), RGB(0, 0, 0));
    ASSERT_TRUE(user->PressOk());
    EXPECT_EQ(run->Outcome().status, 0);
}

TEST_F(Preview, FarZoomsNeitherFailNorEndTheDialog) {
    StorePlace();
    Open(100, 70);
    for (int i = 0; i < 110; ++i) {
        SendMessageA(user->Control(kZoomOut), BM_CLICK, 0, 0);
        if (i % 10 == 0) {
            user->Settle();
        }
    }
    user->Settle();
    for (int i = 0; i < 150; ++i) {
        SendMessageA(user->Control(kZoomIn), BM_CLICK, 0, 0);
        if (i % 10 == 0) {
            user->Settle();
        }
    }
    user->Settle();
    EXPECT_TRUE(run->Running());
    EXPECT_EQ(user->Text(1031), "50");
    ASSERT_TRUE(user->PressOk());
    EXPECT_EQ(run->Outcome().status, 0);
}

}  // namespace
}  // namespace mv::windowstest
