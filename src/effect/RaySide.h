// One side of a blur while its rays run.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>

#include "effect/LanePixels.h"
#include "effect/SectorSums.h"
#include "effect/SectorWindow.h"
#include "effect/SideZone.h"
#include "frame/MorvenhaleRenderContext.h"
#include "image/PixelRGB.h"
#include "platform/Thread.h"

namespace mv {

// Lines reach two entries below the first sample and a few beyond the last.
constexpr std::int32_t kLineLead = 2;
constexpr std::int32_t kLineSlack = 6;

// What the rays of one side work with, one thread at a time, and then another side's. FastState is
// the blur's own. Blocks come from the render context and go back with Free.
template <class Blur, int channels>
struct RaySide {
    std::uint32_t index = 0;
    SideZone zone;
    // What the sector's rays read.
    LanePixels pixels;
    ChannelArray<double*, Blur::kLineCount> buffers = {};
    ChannelArray<double*, Blur::kLineCount> lines = {};
    bool isOutOfMemory = false;
    // The fast form's; its buffer ends with the sums.
    typename Blur::FastState fast;
    SectorSums sums;
    SectorWindow window;
    void* windowMemory = nullptr;
    double* fastBuffer = nullptr;

    // For lines of so many steps at most, and fastDoubles, 0 for none. False without memory.
    bool Allocate(MorvenhaleRenderContext& host, std::int32_t steps, std::uint64_t fastDoubles) {
        const std::uint64_t bytes =
            static_cast<std::uint64_t>(steps + kLineSlack) * channels * sizeof(double);
        for (int i = 0; i < Blur::kLineCount; ++i) {
            buffers[i] = static_cast<double*>(AllocateBlock(host, bytes));
            if (buffers[i] == nullptr) {
                return false;
            }
            std::memset(buffers[i], 0, bytes);
            lines[i] = buffers[i] + kLineLead * channels;
        }
        if (fastDoubles != 0) {
            const std::uint64_t fastBytes = fastDoubles * sizeof(double);
            fastBuffer = static_cast<double*>(
                AllocateBlock(host, fastBytes + SectorSums::Bytes(steps, channels)));
        }
        return fastDoubles == 0 || fastBuffer != nullptr;
    }

    void Free(MorvenhaleRenderContext& host) {
        for (double*& buffer : buffers) {
            host.FreeMemory(buffer);
            buffer = nullptr;
        }
        host.FreeMemory(fastBuffer);
        fastBuffer = nullptr;
    }
};

// What sides are at work with: as many as threads may be at sides at a time.
template <class Side>
class SidePlaces {
public:
    void SetCount(std::int32_t threads) {
        count_ = static_cast<std::uint32_t>(
            std::clamp(threads, 1, static_cast<std::int32_t>(kSideCount)));
    }
    std::uint32_t Count() const { return count_; }
    Side& At(std::uint32_t i) { return places_[i]; }

    // A place that nobody else is at as long as this lives; with more threads than places it may
    // have to be waited for.
    class Stay {
    public:
        explicit Stay(SidePlaces& places) : places_(places), index_(places.Take()) {}
        ~Stay() { places_.taken_[index_] = false; }
        Stay(const Stay&) = delete;
        Stay& operator=(const Stay&) = delete;

        Side& Get() const { return places_.places_[index_]; }

    private:
        SidePlaces& places_;
        std::uint32_t index_;
    };

private:
    std::uint32_t Take() {
        for (;; YieldThread()) {
            for (std::uint32_t i = 0; i < count_; ++i) {
                if (!taken_[i].exchange(true)) {
                    return i;
                }
            }
        }
    }

    Side places_[kSideCount];
    std::atomic<bool> taken_[kSideCount] = {};
    std::uint32_t count_ = 1;
};

}  // namespace mv
