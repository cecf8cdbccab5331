// The part of the picture around the rays of a sector that is in memory while they run.
#pragma once

#include <cstddef>
#include <cstdint>

#include "effect/KeptPixels.h"
#include "effect/LanePixels.h"
#include "effect/PictureStream.h"
#include "effect/RaySector.h"
#include "effect/SectorSums.h"

namespace mv {

// Moves with the rays: pixels that they come to are read from the stream, and blurred ones that
// they have left are written to it. Each lane is a ring of pixels. From one ray to the next the
// place on a lane moves by a pixel at most. One thread's; the memory is the caller's.
class SectorWindow final : BlurredRows {
public:
    // Pixels of a lane's ring.
    static constexpr std::int32_t kPixels = 256;
    // Rays that may run before the window moves on: the ring also holds what four rays of the last
    // group need behind them, and the margins of what is read and written.
    static constexpr std::int32_t kMostRays = 232;
    // With a slow stream.
    static constexpr std::int32_t kFewRays = 48;
    // Narrower pictures have no use for a window.
    static constexpr std::int32_t kLeastSize = 32;

    // For the sectors of one side.
    static std::uint64_t Bytes(const RayField& field, const SideSectors& sectors, int channels);

    void SetUp(void* memory, const RayField& field, int channels, std::uint32_t side,
               const KeptPixels& kept, PictureStream& stream);

    // first: the sector's first ray. Gives where its rays read and write.
    LanePixels Begin(const RaySector& sector, const Ray& first);

    // Reads what the rays up to this one come to.
    void ReadTo(const Ray& last);
    // Writes what this ray and all after it leave alone; up to three after it may have run. sums
    // are those of the sector, begun with the pixels of Begin.
    void WriteBehind(SectorSums& sums, const Ray& ray);
    // Writes the rest, when the sums have ended.
    void End(SectorSums& sums);

private:
    // The sector's own pixels of a row, by their margin.
    struct OwnRow {
        PixelRange finished;
        PixelRange written;
        PixelRange alone;
    };

    static std::int32_t UsedLanes(const RayField& field, const RaySector& sector);
    static std::uint64_t RingFloats(const RayField& field, const RaySector& sector, int channels);

    const float* Row(std::int32_t y) const override;
    const float* RowOfRing(std::int32_t y) const;
    const float* CopyOfLane(std::int32_t y) const;

    std::int32_t MajorOf(std::int32_t lane) const {
        return sector_.Sign() > 0 ? lane : laneCount_ - 1 - lane;
    }
    std::int32_t PlaceOn(const Ray& ray, std::int32_t lane) const;

    template <class Work, class Expect>
    void ForEachRun(const std::int32_t* from, const std::int32_t* end, Work work,
                    Expect expect) const;
    template <class Work>
    void ForEachColumnRun(const std::int32_t* from, const std::int32_t* end, Work work) const;

    void ReadRun(std::int32_t y, std::int32_t from, std::int32_t end);
    void WriteTo(const std::int32_t* end);
    void WriteRun(std::int32_t y, std::int32_t from, std::int32_t end);
    void Keep(std::int32_t y, const PixelRange& run);

    RayField field_{};
    std::ptrdiff_t channels_ = 0;
    std::uint32_t side_ = 0;
    const KeptPixels* kept_ = nullptr;
    PictureStream* stream_ = nullptr;

    RaySector sector_;
    LanePixels pixels_;
    std::int32_t laneCount_ = 0;
    std::int32_t firstLane_ = 0;
    std::int32_t travel_ = 1;
    std::int32_t leastPlace_ = 0;
    std::int32_t endPlace_ = 0;

    // On each lane the first place that is not read, that is not written, and work space.
    std::int32_t* read_ = nullptr;
    std::int32_t* written_ = nullptr;
    std::int32_t* next_ = nullptr;
    OwnRow* ownRows_ = nullptr;
    float* copies_ = nullptr;
    float* ring_ = nullptr;

    PixelRange run_{};
    std::int32_t runRow_ = 0;
};

}  // namespace mv
