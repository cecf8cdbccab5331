// The memory of a blur but for the lines of its rays.
#pragma once

#include <algorithm>
#include <cstdint>

#include "effect/BlurSums.h"
#include "effect/ContributionList.h"
#include "effect/KeptPixels.h"
#include "effect/SectorWindow.h"
#include "image/MorvenhaleFilter.h"
#include "platform/LargePages.h"

namespace mv {

// Sums, contributions for later, and what a streamed picture needs, all of it before the first
// pixel is written. Blocks come from the render context; Free gives them back, however far it came.
template <class Image, class AccumulatorPixel>
class RayBlurMemory {
    static constexpr int kChannels = Image::Pixel_t::kChannels;

public:
    explicit RayBlurMemory(MorvenhaleRenderContext* host) : host_(host) {
        for (auto& list : lists) {
            list.SetContext(host);
        }
    }

    BlurSums<Image, AccumulatorPixel> sums;
    ContributionList<kChannels> lists[kSideCount];
    KeptPixels kept;
    // For so many sides at a time, whichever they are.
    void* windows[kSideCount] = {};

    // For the fast form. As all that follows, false without memory.
    bool AllocateSeams() {
        seams_ = Allocate(SeamMap::Bytes(sums.Height()));
        if (seams_ != nullptr) {
            sums.UseSeams(seams_);
        }
        return seams_ != nullptr;
    }

    bool AllocateStream(const RayField& field, std::uint32_t sidesAtATime) {
        keptMap_ = Allocate(KeptPixels::MapBytes(field.height));
        if (keptMap_ == nullptr) {
            return false;
        }
        kept.Fill(keptMap_, field.width, field.height, sums.AllSectors());
        keptPixels_ = Allocate(std::uint64_t{kept.Count()} * kChannels * sizeof(float));
        kept.SetPixels(static_cast<float*>(keptPixels_), kChannels);
        bool isComplete = keptPixels_ != nullptr;
        std::uint64_t bytes = 0;
        for (std::uint32_t side = 0; side < kSideCount && isComplete; ++side) {
            bytes = std::max(bytes, SectorWindow::Bytes(field, sums.Sectors(side), kChannels));
            isComplete = lists[side].Reserve(sums.MostKept(side));
        }
        for (std::uint32_t i = 0; i < sidesAtATime && isComplete; ++i) {
            windows[i] = Allocate(bytes);
            isComplete = windows[i] != nullptr;
            if (isComplete) {
                PreferLargePages(windows[i], bytes);
            }
        }
        return isComplete;
    }

    bool AllocateAccumulator(const Image& image) {
        auto& accumulator = sums.accumulator;
        accumulator = typename BlurSums<Image, AccumulatorPixel>::AccumulatorType(image);
        accumulator.height = sums.Rows();
        accumulator.row_bytes = image.width * AccumulatorPixel::kSize;
        accumulator.dynamic_pixel_size = AccumulatorPixel::kSize;
        accumulator.is_connected = true;
        accumulator.is_premultiplied = true;
        const std::uint64_t bytes = static_cast<std::uint64_t>(accumulator.height) *
                                    static_cast<std::uint64_t>(accumulator.row_bytes);
        accumulator.data = static_cast<unsigned char*>(Allocate(bytes));
        if (accumulator.data == nullptr) {
            return false;
        }
        PreferLargePages(accumulator.data, bytes);
        return true;
    }

    void Free() {
        host_->FreeMemory(sums.accumulator.data);
        sums.accumulator.data = nullptr;
        for (void** block : {&seams_, &keptMap_, &keptPixels_}) {
            host_->FreeMemory(*block);
            *block = nullptr;
        }
        for (std::uint32_t side = 0; side < kSideCount; ++side) {
            host_->FreeMemory(windows[side]);
            windows[side] = nullptr;
            lists[side].Clear();
        }
    }

private:
    void* Allocate(std::uint64_t bytes) const { return AllocateBlock(*host_, bytes); }

    MorvenhaleRenderContext* host_;
    void* seams_ = nullptr;
    void* keptMap_ = nullptr;
    void* keptPixels_ = nullptr;
};

}  // namespace mv
