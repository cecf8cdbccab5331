#include "effect/SectorWindow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "effect/BlurSums.h"
#include "image/PixelArray.h"

namespace mv {
namespace {

// Gives each pixel its own number, and looks at what comes back.
class NumberedPicture final : public PictureStream {
public:
    explicit NumberedPicture(const RayField& field)
        : field_(field), written_(static_cast<std::size_t>(field.width * field.height)) {}

    float NumberOf(std::int32_t x, std::int32_t y) const {
        return static_cast<float>(y * field_.width + x + 1);
    }

    void Read(std::uint32_t, std::int32_t y, std::int32_t from, std::int32_t end,
              float* out) override {
        ASSERT_LE(0, from);
        ASSERT_LT(from, end);
        ASSERT_LE(end, field_.width);
        ASSERT_TRUE(y >= 0 && y < field_.height);
        for (std::int32_t x = from; x < end; ++x) {
            *out++ = NumberOf(x, y);
        }
    }
    void ExpectRead(std::int32_t, std::int32_t, std::int32_t) const override {}
    void ExpectWrite(std::int32_t, std::int32_t, std::int32_t) const override {}

    // Blurred pixels come out as the negative numbers of those that were read.
    void Write(std::int32_t y, std::int32_t from, std::int32_t end,
               const BlurredRows& rows) override {
        for (std::int32_t x = from; x < end; ++x) {
            ++written_[static_cast<std::size_t>(y * field_.width + x)];
            for (std::int32_t row = std::max(y - 1, 0); row <= std::min(y + 1, field_.height - 1);
                 ++row) {
                const float* values = rows.Row(row);
                for (std::int32_t column = std::max(x - 1, 0);
                     column <= std::min(x + 1, field_.width - 1); ++column) {
                    wrong_ += values[column] == -NumberOf(column, row) ? 0 : 1;
                }
            }
        }
    }
    bool IsSlow() const override { return false; }
    std::int32_t EndRow(std::int32_t) override { return 0; }

    bool IsEachWrittenOnce() const {
        return std::all_of(written_.begin(), written_.end(), [](int times) { return times == 1; });
    }
    int WrongNeighbors() const { return wrong_; }

private:
    RayField field_;
    std::vector<int> written_;
    int wrong_ = 0;
};

using Image = PixelArray<PixelRGB<LayoutGrayPixel<-1>, float, false, false, 255>, 0, false>;
using AccumulatorPixel = PixelRGB<LayoutGrayPixel<-1>, float, false, true, 255>;

// Walks all rays of a picture. Where a blur would add, every pixel gets the negative of its own
// number, with a weight of 1, so that it comes out as that.
class Walk {
public:
    explicit Walk(const RayField& field) : field_(field), picture_(field) {
        sums_.Divide(field);
        seamMemory_.resize(SeamMap::Bytes(field.height));
        sums_.UseSeams(seamMemory_.data());
        accumulator_.assign(
            static_cast<std::size_t>(sums_.Rows()) * static_cast<std::size_t>(field.width) * 2,
            0.0f);
        sums_.accumulator.data = reinterpret_cast<unsigned char*>(accumulator_.data());
        keptMemory_.resize(KeptPixels::MapBytes(field.height));
        kept_.Fill(keptMemory_.data(), field.width, field.height, sums_.AllSectors());
        keptPixels_.resize(kept_.Count());
        kept_.SetPixels(keptPixels_.data(), 1);
    }

    void Run() {
        for (std::uint32_t side = 0; side < kSideCount; ++side) {
            const SideSectors& sectors = sums_.Sectors(side);
            std::vector<unsigned char> memory(SectorWindow::Bytes(field_, sectors, 1));
            SectorWindow window;
            window.SetUp(memory.data(), field_, 1, side, kept_, picture_);
            std::vector<unsigned char> lanes(
                SectorSums::Bytes(std::max(field_.width, field_.height), 1));
            SectorSums sums;
            sums.SetUp(lanes.data(), sums_.Target(), side);
            for (int i = 0; i < sectors.count; ++i) {
                RunSector(side, sectors.sectors[i], window, sums);
            }
        }
        FillSeams();
        for (std::int32_t y = 0; y < field_.height; ++y) {
            kept_.WriteRow(picture_, y);
        }
    }

    const NumberedPicture& Picture() const { return picture_; }
    int WrongReads() const { return wrongReads_; }

private:
    void RunSector(std::uint32_t side, const RaySector& sector, SectorWindow& window,
                   SectorSums& sums) {
        const auto rayOf = [&](std::int32_t k) {
            return MakeRay(field_, EndPixel(field_, side, k));
        };
        const LanePixels pixels = window.Begin(sector, rayOf(sector.FirstRay()));
        sums.Begin(sector, pixels);
        for (std::int32_t k = sector.FirstRay(); k <= sector.LastRay();
             k += SectorWindow::kMostRays) {
            const std::int32_t last = std::min(k + SectorWindow::kMostRays - 1, sector.LastRay());
            window.ReadTo(rayOf(last));
            for (std::int32_t ray = k; ray <= last; ++ray) {
                WalkRay(rayOf(ray), pixels, sums);
            }
            window.WriteBehind(sums, rayOf(std::max(last - 3, k)));
        }
        sums.End();
        window.End(sums);
    }

    void WalkRay(const Ray& ray, const LanePixels& pixels, SectorSums& sums) {
        const std::int32_t size = ray.isXMajor ? field_.height : field_.width;
        double minor = ray.minor;
        for (std::int32_t i = 0; i < ray.steps; ++i, minor += ray.slope) {
            const MinorPlace place = PlaceOf(minor, size);
            const std::int32_t major = ray.start + ray.sign * i;
            for (const std::int32_t pixel : {place.first, place.second}) {
                wrongReads_ += *pixels.At(major, pixel) == NumberAt(ray, major, pixel) ? 0 : 1;
            }
            if (place.isInside) {
                const std::int32_t lane = sums.LaneOf(major);
                sums.Pass(lane, place.first);
                for (const std::int32_t pixel : {place.first, place.second}) {
                    float* sum = sums.Sums(lane, pixel);
                    sum[0] = -NumberAt(ray, major, pixel);
                    sum[1] = 1.0f;
                }
            }
        }
    }

    float NumberAt(const Ray& ray, std::int32_t major, std::int32_t minor) const {
        return ray.isXMajor ? picture_.NumberOf(major, minor) : picture_.NumberOf(minor, major);
    }

    // What sectors share comes out right too, or their neighbours could not be looked at.
    void FillSeams() {
        for (std::int32_t y = 0; y < field_.height; ++y) {
            for (std::int32_t x = 0; x < field_.width; ++x) {
                std::uint32_t place = 0;
                if (sums_.Find(x, y, place)) {
                    *kept_.At(x, y) = -picture_.NumberOf(x, y);
                }
            }
        }
    }

    RayField field_;
    NumberedPicture picture_;
    BlurSums<Image, AccumulatorPixel> sums_;
    KeptPixels kept_;
    std::vector<unsigned char> seamMemory_;
    std::vector<unsigned char> keptMemory_;
    std::vector<float> accumulator_;
    std::vector<float> keptPixels_;
    int wrongReads_ = 0;
};

// Pictures wider and higher than the ring of a lane.
TEST(SectorWindow, RaysFindWhatTheyReadAndEachPixelIsWrittenOnceAmongItsNeighbors) {
    for (const auto& [width, height] : {std::pair{700, 410}, {37, 900}, {900, 33}, {320, 320}}) {
        for (const std::int32_t x : {-300, -1, 0, width / 3, width / 2, width - 1, width + 50}) {
            for (const std::int32_t y : {-90, 0, height / 2, height - 2, height, 20000}) {
                Walk walk({width, height, x, y});
                walk.Run();
                EXPECT_EQ(walk.WrongReads(), 0)
                    << width << " x " << height << ": " << x << ", " << y;
                EXPECT_EQ(walk.Picture().WrongNeighbors(), 0)
                    << width << " x " << height << ": " << x << ", " << y;
                EXPECT_TRUE(walk.Picture().IsEachWrittenOnce())
                    << width << " x " << height << ": " << x << ", " << y;
            }
        }
    }
}

}  // namespace
}  // namespace mv
