// One side of a blur while its rays run.
#pragma once

#include <cstdint>
#include <cstring>

#include "effect/LanePixels.h"
#include "effect/SectorSums.h"
#include "effect/SectorWindow.h"
#include "effect/SideZone.h"
#include "frame/MorvenhaleRenderContext.h"
#include "image/PixelRGB.h"

namespace mv {

// Lines reach two entries below the first sample and a few beyond the last.
constexpr std::int32_t kLineLead = 2;
constexpr std::int32_t kLineSlack = 6;

// What the rays of one side work with, one thread at a time. FastState is the blur's own. Blocks
// come from the render context and go back with Free.
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
    double* fastBuffer = nullptr;

    // For lines of so many steps at most, and fastDoubles, 0 for none. False without memory.
    bool Allocate(MorvenhaleRenderContext& host, std::int32_t steps, std::uint64_t fastDoubles) {
        const std::uint64_t bytes =
            static_cast<std::uint64_t>(steps + kLineSlack) * channels * sizeof(double);
        for (int i = 0; i < Blur::kLineCount; ++i) {
            buffers[i] = AllocateZeros(host, bytes, bytes);
            if (buffers[i] == nullptr) {
                return false;
            }
            lines[i] = buffers[i] + kLineLead * channels;
        }
        if (fastDoubles != 0) {
            const std::uint64_t fastBytes = fastDoubles * sizeof(double);
            fastBuffer =
                AllocateZeros(host, fastBytes + SectorSums::Bytes(steps, channels), fastBytes);
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

private:
    static double* AllocateZeros(MorvenhaleRenderContext& host, std::uint64_t bytes,
                                 std::uint64_t zeros) {
        void* memory = AllocateBlock(host, bytes);
        if (memory != nullptr) {
            std::memset(memory, 0, zeros);
        }
        return static_cast<double*>(memory);
    }
};

}  // namespace mv
