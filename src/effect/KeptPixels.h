// Blurred pixels that wait for their neighbours in other sectors of rays.
#pragma once

#include <cstddef>
#include <cstdint>

#include "effect/PictureStream.h"
#include "effect/SeamMap.h"

namespace mv {

// The seams between sectors and the rims of the sectors beside them, packed. A pixel is written
// with its neighbours: what a sector writes by itself lies so far inside that it has blurred them
// all; the rest, and the pixels around the rest, are kept here until all sectors are done.
class KeptPixels {
public:
    // Margins of the sectors' own pixels, in pixels beside the cone of its rays: of those that it
    // writes by itself, and of those that nobody else's neighbour is.
    static constexpr double kWrittenMargin = 5.0;
    static constexpr double kAloneMargin = 7.0;

    static std::uint64_t MapBytes(std::int32_t height) { return 2 * SeamMap::Bytes(height); }

    // memory takes MapBytes(height); sides has kSideCount entries.
    void Fill(void* memory, std::int32_t width, std::int32_t height, const SideSectors* sides);

    // How many pixels; SetPixels takes so many times channels floats.
    std::uint32_t Count() const { return kept_.Slots(); }
    void SetPixels(float* pixels, int channels) {
        pixels_ = pixels;
        channels_ = channels;
    }

    // Null for a pixel that is not kept.
    float* At(std::int32_t x, std::int32_t y) const {
        std::uint32_t slot = 0;
        if (!kept_.Find(x, y, slot)) {
            return nullptr;
        }
        return pixels_ + static_cast<std::ptrdiff_t>(slot) * channels_;
    }

    // Gives the stream the pixels of row y that no sector has written.
    void WriteRow(PictureStream& stream, std::int32_t y) const;

private:
    SeamMap kept_;
    SeamMap unwritten_;
    float* pixels_ = nullptr;
    std::ptrdiff_t channels_ = 0;
};

}  // namespace mv
