// The sums of one sector of rays while its rays run.
#pragma once

#include <cstdint>

#include "effect/LanePixels.h"
#include "effect/RaySector.h"
#include "effect/SeamMap.h"
#include "effect/SideZone.h"
#include "effect/kernels/LaneSums.h"

namespace mv {

// What a blur adds to; the same for all sides of a render.
struct BlurTarget {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t channels = 0;
    const SideZone* zones = nullptr;       // of all sides
    const bool* areLate = nullptr;         // of all sides: those that run after all earlier ones
    const SideSectors* sectors = nullptr;  // of all sides
    const SeamMap* seams = nullptr;
    float* seamSums = nullptr;  // channels and weight for each number of the map
};

// Keeps open the few pixels of each row (or column) that the rays of a sector pass at present, and
// finishes those that all of them have passed. Pixels that are not the sector's own go to the sums
// of the seams and are fetched back from there, where they are the side's to add to. One thread's,
// on its stack; the memory is the caller's.
class SectorSums {
public:
    // Of a picture with so many rows and columns at most.
    static std::uint64_t Bytes(std::int32_t lanes, int channels) {
        return static_cast<std::uint64_t>(lanes) *
               (sizeof(SumLane) +
                kOpenPixels * static_cast<std::uint64_t>(channels + 1) * sizeof(float));
    }

    void SetUp(void* memory, const BlurTarget& target, std::uint32_t side);

    // out: where finished pixels go.
    void Begin(const RaySector& sector, const LanePixels& out);
    // Finishes what is open.
    void End();

    // In the direction of the rays' steps.
    std::int32_t LaneCount() const { return laneCount_; }

    // Finishes what lies before a place (see PlaceOfPixel), which no ray from now on touches.
    void CloseTo(std::int32_t lane, std::int32_t place);

    // Makes 0 of the sector's own pixels from a place to end - 1 that no ray has reached.
    void ClearUnreached(std::int32_t lane, std::int32_t from, std::int32_t end);

    // For the kernels.
    const LaneSums& Lanes() const { return lanes_; }

    // The lane of a row or column.
    std::int32_t LaneOf(std::int32_t major) const {
        return sector_.Sign() > 0 ? major : laneCount_ - 1 - major;
    }

    // Gets a lane ready for a ray that touches a pixel and the next one.
    void Pass(std::int32_t lane, std::int32_t pixel);

    // Places count pixels of a lane in the direction in which the sector's rays follow each other.
    // That of a ray which touches a pixel and the next one is that of the one behind.
    std::int32_t PlaceOfPixel(std::int32_t pixel) const {
        return lanes_.travel > 0 ? pixel : -(pixel + 1);
    }

    // An open pixel's channels and weight.
    float* Sums(std::int32_t lane, std::int32_t pixel) const {
        return LaneStart(lane) + (pixel & (kOpenPixels - 1)) * Floats();
    }

private:
    std::ptrdiff_t Floats() const { return target_.channels + 1; }
    float* LaneStart(std::int32_t lane) const {
        return lanes_.sums + static_cast<std::ptrdiff_t>(lane) * kOpenPixels * Floats();
    }
    std::int32_t MajorOf(std::int32_t lane) const { return LaneOf(lane); }
    float* OutOf(std::int32_t lane, std::int32_t pixel) const {
        return lanes_.out + lane * lanes_.outStep + (pixel & lanes_.outMask) * lanes_.outMinor;
    }

    bool IsOfSide(std::int32_t x, std::int32_t y) const;
    float* SeamSumsOf(std::int32_t lane, std::int32_t pixel) const;
    void Open(std::int32_t lane, std::int32_t pixel);
    void Close(std::int32_t lane, std::int32_t pixel);
    void Finish(std::int32_t lane, std::int32_t pixel);
    void StartLane(std::int32_t lane, std::int32_t place);

    BlurTarget target_;
    std::uint32_t side_ = 0;
    RaySector sector_;
    LaneSums lanes_{};
    std::int32_t laneCount_ = 0;
    std::int32_t laneSize_ = 0;
};

}  // namespace mv
