#include "interface/PreviewPixels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

namespace mv {
namespace {

struct Picture {
    hostapi::FilterRecord record = {};
    std::vector<std::uint8_t> data;
    std::vector<std::uint8_t> buffer;

    Picture(int width, int height, int planes, int depth, int mode) {
        record.imageMode = static_cast<std::int16_t>(mode);
        record.depth = depth;
        record.planes = static_cast<std::int16_t>(planes);
        record.inNonLayerPlanes = record.planes;
        record.imageSize = {static_cast<std::int16_t>(height), static_cast<std::int16_t>(width)};
        record.outRect = {0, 0, static_cast<std::int16_t>(height),
                          static_cast<std::int16_t>(width)};
        const int bytes = depth == 32 ? 4 : depth == 16 ? 2 : 1;
        record.outRowBytes = width * planes * bytes;
        data.resize(static_cast<std::size_t>(record.outRowBytes) *
                    static_cast<std::size_t>(height));
        record.outData = data.data();
    }

    template <class Sample>
    void Put(int index, Sample value) {
        std::memcpy(data.data() + static_cast<std::size_t>(index) * sizeof value, &value,
                    sizeof value);
    }

    void MakeLayer(int colors) {
        record.inLayerPlanes = static_cast<std::int16_t>(colors);
        record.inTransparencyMask = 1;
        record.inNonLayerPlanes = 0;
    }

    FormatResult Convert(bool hostDisplays = true, int width = 32) {
        buffer.assign(static_cast<std::size_t>(width * record.outRect.bottom * 3), 77);
        PreviewFormat format;
        const FormatResult result = ChoosePreviewFormat(record, format);
        if (result == FormatResult::Usable) {
            ConvertPreview(record, format, hostDisplays,
                           {buffer.data(), width, record.outRect.bottom});
        }
        return result;
    }

    std::vector<int> Pixel(int x, int row, int width = 32) const {
        const std::size_t at = static_cast<std::size_t>((row * width + x) * 3);
        return {buffer[at], buffer[at + 1], buffer[at + 2]};
    }
};

using Bytes = std::vector<int>;

TEST(PreviewPixels, HostThatDisplaysGetsRedGreenBlueFromTheTop) {
    Picture picture(2, 2, 3, 8, 3);
    for (int i = 0; i < 12; ++i) {
        picture.Put(i, static_cast<std::uint8_t>(10 * i));
    }
    ASSERT_EQ(picture.Convert(true), FormatResult::Usable);
    EXPECT_EQ(picture.Pixel(0, 0), (Bytes{0, 10, 20}));
    EXPECT_EQ(picture.Pixel(1, 0), (Bytes{30, 40, 50}));
    EXPECT_EQ(picture.Pixel(0, 1), (Bytes{60, 70, 80}));
    EXPECT_EQ(picture.Pixel(2, 0), (Bytes{77, 77, 77}));  // beyond the picture
}

TEST(PreviewPixels, WithoutItRedAndBlueSwapAndRowsRunUp) {
    Picture picture(2, 2, 3, 8, 3);
    for (int i = 0; i < 12; ++i) {
        picture.Put(i, static_cast<std::uint8_t>(10 * i));
    }
    ASSERT_EQ(picture.Convert(false), FormatResult::Usable);
    EXPECT_EQ(picture.Pixel(0, 1), (Bytes{20, 10, 0}));
    EXPECT_EQ(picture.Pixel(1, 1), (Bytes{50, 40, 30}));
    EXPECT_EQ(picture.Pixel(0, 0), (Bytes{80, 70, 60}));
}

TEST(PreviewPixels, OneColorGoesIntoAllThree) {
    Picture picture(1, 1, 1, 0, 1);
    picture.Put(0, std::uint8_t{200});
    ASSERT_EQ(picture.Convert(), FormatResult::Usable);
    EXPECT_EQ(picture.Pixel(0, 0), (Bytes{200, 200, 200}));
}

TEST(PreviewPixels, TwoColorsComeInReverse) {
    Picture picture(1, 1, 2, 8, 7);
    picture.Put(0, std::uint8_t{11});
    picture.Put(1, std::uint8_t{22});
    ASSERT_EQ(picture.Convert(true), FormatResult::Usable);
    EXPECT_EQ(picture.Pixel(0, 0), (Bytes{22, 11, 0}));
    ASSERT_EQ(picture.Convert(false), FormatResult::Usable);
    EXPECT_EQ(picture.Pixel(0, 0), (Bytes{0, 11, 22}));
}

TEST(PreviewPixels, SixteenBitsAreScaledAndTruncated) {
    Picture picture(1, 1, 3, 16, 11);
    picture.Put(0, std::uint16_t{32768});  // 255.004
    picture.Put(1, std::uint16_t{16384});  // 127.502
    picture.Put(2, std::uint16_t{128});    // 0.996
    ASSERT_EQ(picture.Convert(), FormatResult::Usable);
    EXPECT_EQ(picture.Pixel(0, 0), (Bytes{255, 127, 0}));
}

TEST(PreviewPixels, FloatsEndAtWhiteAndHaveNoLowerLimit) {
    Picture picture(2, 1, 3, 32, 16);
    picture.Put(0, 1.5f);
    picture.Put(1, 0.5f);    // 127.5
    picture.Put(2, -0.01f);  // -2.55, truncated to -2
    picture.Put(3, std::numeric_limits<float>::infinity());
    picture.Put(4, std::numeric_limits<float>::quiet_NaN());
    picture.Put(5, -std::numeric_limits<float>::infinity());
    ASSERT_EQ(picture.Convert(), FormatResult::Usable);
    EXPECT_EQ(picture.Pixel(0, 0), (Bytes{255, 127, 254}));
    EXPECT_EQ(picture.Pixel(1, 0), (Bytes{255, 0, 0}));
}

TEST(PreviewPixels, AByteIsTruncatedAndNeverUndefined) {
    EXPECT_EQ(PreviewByte(254.999), 254);
    EXPECT_EQ(PreviewByte(-0.9), 0);
    EXPECT_EQ(PreviewByte(-1.0), 255);
    EXPECT_EQ(PreviewByte(510.0), 254);
    EXPECT_EQ(PreviewByte(1e300), 0);
    EXPECT_EQ(PreviewByte(-1e300), 0);
    EXPECT_EQ(PreviewByte(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(PreviewPixels, CheckerSquaresAreSixteenPixelsOfTheFullImage) {
    EXPECT_EQ(CheckerGray(0, 0), 208.0);
    EXPECT_EQ(CheckerGray(15, 15), 208.0);
    EXPECT_EQ(CheckerGray(16, 0), 255.0);
    EXPECT_EQ(CheckerGray(0, 16), 255.0);
    EXPECT_EQ(CheckerGray(16, 16), 208.0);
    EXPECT_EQ(CheckerGray(32, 0), 208.0);
}

TEST(PreviewPixels, TransparencyShowsTheChecker) {
    Picture picture(20, 1, 2, 8, 1);
    picture.MakeLayer(1);
    for (int x = 0; x < 20; ++x) {
        picture.Put(2 * x, std::uint8_t{100});
        picture.Put(2 * x + 1, std::uint8_t{0});
    }
    picture.Put(3, std::uint8_t{255});  // the second pixel is opaque
    picture.Put(5, std::uint8_t{51});   // the third by a fifth: 208 - 108 / 5 = 186.4
    ASSERT_EQ(picture.Convert(), FormatResult::Usable);
    EXPECT_EQ(picture.Pixel(0, 0), (Bytes{208, 208, 208}));
    EXPECT_EQ(picture.Pixel(1, 0), (Bytes{100, 100, 100}));
    EXPECT_EQ(picture.Pixel(2, 0), (Bytes{186, 186, 186}));
    EXPECT_EQ(picture.Pixel(15, 0), (Bytes{208, 208, 208}));
    EXPECT_EQ(picture.Pixel(16, 0), (Bytes{255, 255, 255}));
}

TEST(PreviewPixels, CheckerScalesWithTheReducedPicture) {
    Picture picture(10, 1, 2, 8, 1);
    picture.MakeLayer(1);
    picture.record.imageSize = {4, 40};
    ASSERT_EQ(picture.Convert(), FormatResult::Usable);
    EXPECT_EQ(picture.Pixel(3, 0), (Bytes{208, 208, 208}));  // 3 * 40 / 10 = 12
    EXPECT_EQ(picture.Pixel(4, 0), (Bytes{255, 255, 255}));  // 16
    EXPECT_EQ(picture.Pixel(8, 0), (Bytes{208, 208, 208}));  // 32
}

TEST(PreviewPixels, AlphaOfTheOtherDepths) {
    Picture wide(1, 1, 2, 16, 10);
    wide.MakeLayer(1);
    wide.Put(0, std::uint16_t{0});
    wide.Put(1, std::uint16_t{16384});
    ASSERT_EQ(wide.Convert(), FormatResult::Usable);
    EXPECT_EQ(wide.Pixel(0, 0)[0], 103);  // 208 - 208 * 16384 / 32767 = 103.997
    Picture floating(1, 1, 2, 32, 17);
    floating.MakeLayer(1);
    floating.Put(0, 1.0f);
    floating.Put(1, 0.25f);
    ASSERT_EQ(floating.Convert(), FormatResult::Usable);
    EXPECT_EQ(floating.Pixel(0, 0)[0], 219);  // 208 + 47 / 4
}

TEST(PreviewPixels, ModesWithoutAPreviewAreInvalid) {
    for (const int mode : {-1, 0, 2, 4, 5, 6, 8, 9, 12, 13, 15, 18}) {
        Picture picture(1, 1, 3, 8, mode);
        EXPECT_EQ(picture.Convert(), FormatResult::InvalidMode) << mode;
        EXPECT_EQ(picture.Pixel(0, 0), (Bytes{77, 77, 77}));
    }
    for (const int mode : {1, 3, 7, 10, 11, 14, 16, 17}) {
        EXPECT_EQ(Picture(1, 1, 3, 8, mode).Convert(), FormatResult::Usable) << mode;
    }
}

TEST(PreviewPixels, ColorsComeFromLayerThenOtherThenAllPlanes) {
    Picture picture(1, 1, 4, 8, 3);
    PreviewFormat format;
    picture.record.inNonLayerPlanes = 0;
    ASSERT_EQ(ChoosePreviewFormat(picture.record, format), FormatResult::Usable);
    EXPECT_EQ(format.colors, 3);
    EXPECT_FALSE(format.hasAlpha);
    picture.record.inNonLayerPlanes = 2;
    ASSERT_EQ(ChoosePreviewFormat(picture.record, format), FormatResult::Usable);
    EXPECT_EQ(format.colors, 2);
    picture.MakeLayer(3);
    ASSERT_EQ(ChoosePreviewFormat(picture.record, format), FormatResult::Usable);
    EXPECT_EQ(format.colors, 3);
    EXPECT_TRUE(format.hasAlpha);
    EXPECT_EQ(format.alphaPlane, 3);
    picture.record.planes = 3;  // the transparency is stated and not delivered
    ASSERT_EQ(ChoosePreviewFormat(picture.record, format), FormatResult::Usable);
    EXPECT_FALSE(format.hasAlpha);
}

TEST(PreviewPixels, CountsThatDoNotFitTogetherDrawNothing) {
    Picture picture(1, 1, 1, 8, 3);
    picture.record.inLayerPlanes = 3;
    EXPECT_EQ(picture.Convert(), FormatResult::TooFewPlanes);
    picture.record.inLayerPlanes = -3;
    EXPECT_EQ(picture.Convert(), FormatResult::TooFewPlanes);
    picture.record.planes = 0;
    picture.record.inLayerPlanes = 0;
    picture.record.inNonLayerPlanes = 0;
    EXPECT_EQ(picture.Convert(), FormatResult::TooFewPlanes);
}

TEST(PreviewPixels, OtherDepthsAndMissingDataLeaveTheBuffer) {
    Picture picture(1, 1, 3, 8, 3);
    picture.record.depth = 1;
    ASSERT_EQ(picture.Convert(), FormatResult::Usable);
    EXPECT_EQ(picture.Pixel(0, 0), (Bytes{77, 77, 77}));
    picture.record.depth = 8;
    picture.record.outData = nullptr;
    ASSERT_EQ(picture.Convert(), FormatResult::Usable);
    EXPECT_EQ(picture.Pixel(0, 0), (Bytes{77, 77, 77}));
}

TEST(PreviewPixels, RowsMayBePadded) {
    Picture picture(1, 2, 1, 8, 1);
    picture.data = {1, 99, 99, 99, 2, 99, 99, 99};
    picture.record.outData = picture.data.data();
    picture.record.outRowBytes = 4;
    ASSERT_EQ(picture.Convert(), FormatResult::Usable);
    EXPECT_EQ(picture.Pixel(0, 0)[0], 1);
    EXPECT_EQ(picture.Pixel(0, 1)[0], 2);
}

TEST(PreviewPixels, APictureLargerThanTheBufferIsCut) {
    Picture picture(4, 2, 1, 8, 1);
    std::vector<std::uint8_t> small(3, 77);
    PreviewFormat format;
    ASSERT_EQ(ChoosePreviewFormat(picture.record, format), FormatResult::Usable);
    ConvertPreview(picture.record, format, true, {small.data(), 1, 1});
    EXPECT_EQ(small[0], 0);
    ConvertPreview(picture.record, format, true, {nullptr, 1, 1});
}

}  // namespace
}  // namespace mv
