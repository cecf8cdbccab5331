// What a blur adds up, outside of the lanes that rays pass at present.
#pragma once

#include <algorithm>
#include <cstdint>

#include "effect/ContributionList.h"
#include "effect/KeptPixels.h"
#include "effect/RaySector.h"
#include "effect/SeamMap.h"
#include "effect/SectorSums.h"
#include "effect/SideZone.h"
#include "effect/kernels/RowKernels.h"
#include "image/MorvenhaleFilter.h"

namespace mv {

// The accumulator of a blur: channels and weight of each pixel of the picture, or, in the fast
// form, of the seams between sectors of rays alone. Lives for one render; sides write disjoint
// pixels of it. Blocks come from the render context.
template <class Image, class AccumulatorPixel>
class BlurSums {
    static constexpr int kChannels = Image::Pixel_t::kChannels;

public:
    using AccumulatorType = PixelArray<AccumulatorPixel, 0, false>;

    // How the picture falls into sides, zones and sectors.
    void Divide(const RayField& field) {
        width_ = field.width;
        height_ = field.height;
        for (std::uint32_t side = 0; side < kSideCount; ++side) {
            zones_[side] = SideZone(field, side);
            sectors_[side] = SideSectors(field, side, zones_[side]);
            keptSteps_[side] = KeptSteps(field, side);
            isLate_[side] = keptSteps_[side] > kMostKeptSteps;
        }
    }

    // Whether a side would have to keep so many contributions for later, as where the centre lies
    // in a corner or a picture is narrow, that it had better run after the others, adding at once.
    bool IsLate(std::uint32_t side) const { return isLate_[side]; }

    // How many contributions a side may have to keep: two from each step.
    std::uint32_t MostKept(std::uint32_t side) const {
        return isLate_[side] ? 0 : static_cast<std::uint32_t>(2 * keptSteps_[side]);
    }

    // The memory for the map of the seams, SeamMap::Bytes(height) of it.
    void UseSeams(void* memory) {
        seams_.Fill(memory, width_, height_, sectors_);
        hasSeams_ = true;
    }

    // Of the picture that was divided.
    std::int32_t Height() const { return height_; }

    // The accumulator's rows: the picture's, or as many of its width as the seams fill.
    std::int32_t Rows() const {
        if (!hasSeams_) {
            return height_;
        }
        const auto width = static_cast<std::uint32_t>(width_);
        return static_cast<std::int32_t>((seams_.Slots() + width - 1) / width);
    }

    AccumulatorType accumulator;

    // Where a side adds at once.
    SideZone Zone(std::uint32_t side) const { return isLate_[side] ? SideZone() : zones_[side]; }
    const SideSectors& Sectors(std::uint32_t side) const { return sectors_[side]; }

    const SideSectors* AllSectors() const { return sectors_; }

    // For a fast form that finishes pixels by itself.
    BlurTarget Target() const {
        return {width_,  height_,  kChannels, zones_,
                isLate_, sectors_, &seams_,   reinterpret_cast<float*>(accumulator.data)};
    }

    // Which of the accumulator's pixels; with seams there is none for a sector's own, which no
    // other side reaches.
    bool Find(std::int32_t x, std::int32_t y, std::uint32_t& place) const {
        if (hasSeams_) {
            return seams_.Find(x, y, place);
        }
        place = static_cast<std::uint32_t>(y) * static_cast<std::uint32_t>(width_) +
                static_cast<std::uint32_t>(x);
        return true;
    }

    void Add(const typename ContributionList<kChannels>::Entry& entry) const {
        AddTo(At(entry.pixel), entry.value, entry.weight);
    }

    // Sums are formed in double and kept in single precision; weights in single precision.
    static void AddTo(unsigned char* pixel, const double* weighted, float weight) {
        for (int c = 0; c < kChannels; ++c) {
            const double sum = static_cast<double>(LoadChannel<float>(pixel, c)) + weighted[c];
            StoreChannel(pixel, c, static_cast<float>(sum));
        }
        StoreChannel(pixel, kChannels, LoadChannel<float>(pixel, kChannels) + weight);
    }

    // Divides a row's sums by their weights, into the picture; pixels that no ray reached come out
    // as 0. With seams, those alone.
    void NormalizeRow(const Image& picture, std::int32_t y) const {
        if (!hasSeams_) {
            NormalizePixels(picture.Row(y), picture.width, accumulator.Row(y));
            return;
        }
        ForEachSeam(y, [&](const SeamMap::Run& run) {
            NormalizePixels(picture.Pixel(run.first, y), run.end - run.first, At(run.slot));
        });
    }

    // The same of seams that are part of what is kept.
    void NormalizeRow(const KeptPixels& kept, std::int32_t y) const {
        ForEachSeam(y, [&](const SeamMap::Run& run) {
            NormalizePixels(reinterpret_cast<unsigned char*>(kept.At(run.first, y)),
                            run.end - run.first, At(run.slot));
        });
    }

private:
    template <class Work>
    void ForEachSeam(std::int32_t y, Work work) const {
        const SeamMap::Run* runs = seams_.RowRuns(y);
        for (const SeamMap::Run* run = runs; !SeamMap::IsLast(runs, run); ++run) {
            work(*run);
        }
    }

    static constexpr std::int64_t kMostKeptSteps = 1 << 20;

    // Steps that may have contributions to keep, counted until they are too many.
    std::int64_t KeptSteps(const RayField& field, std::uint32_t side) const {
        std::int64_t kept = 0;
        for (int i = 0; i < sectors_[side].count && kept <= kMostKeptSteps; ++i) {
            const RaySector& sector = sectors_[side].sectors[i];
            for (std::int32_t k = sector.FirstRay(); k <= sector.LastRay(); ++k) {
                kept += zones_[side].SafeStep(MakeRay(field, EndPixel(field, side, k)));
            }
        }
        return kept;
    }

    unsigned char* At(std::uint32_t place) const {
        return accumulator.data +
               static_cast<std::size_t>(place) * static_cast<std::size_t>(AccumulatorPixel::kSize);
    }

    static void NormalizePixels(unsigned char* out, std::int32_t count, const unsigned char* sums) {
        const RowKernels* kernels = SelectRowKernels();
        if (kernels != nullptr) {
            kernels->normalize[kChannels](reinterpret_cast<float*>(out),
                                          reinterpret_cast<const float*>(sums), count);
            return;
        }
        for (std::int32_t x = 0; x < count; ++x) {
            const double weight = LoadChannel<float>(sums, kChannels);
            const double factor = weight != 0.0 ? 1.0 / weight : 0.0;
            for (int c = 0; c < kChannels; ++c) {
                StoreChannel(out, c, static_cast<float>(LoadChannel<float>(sums, c) * factor));
            }
            sums += AccumulatorPixel::kSize;
            out += Image::Pixel_t::kSize;
        }
    }

    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
    SideZone zones_[kSideCount];
    std::int64_t keptSteps_[kSideCount] = {};
    bool isLate_[kSideCount] = {};
    SideSectors sectors_[kSideCount];
    SeamMap seams_;
    bool hasSeams_ = false;
};

}  // namespace mv
