// Neighbouring rays that walk alike, and the pixels that are theirs alone.
#pragma once

#include <cstdint>

#include "effect/RayGeometry.h"
#include "effect/SideZone.h"

namespace mv {

// Pixels first to end - 1 of a row or a column.
struct PixelRange {
    std::int32_t first;
    std::int32_t end;

    bool IsEmpty() const { return first >= end; }
    bool Contains(std::int32_t pixel) const { return pixel >= first && pixel < end; }
};

// Rays of one side that follow each other and share their major axis and direction, so that on
// every row (or column) that they cross their places move one way only. What lies inside the cone
// of its rays, a margin away from both edges, no other sector reads or writes.
class RaySector {
public:
    RaySector() = default;
    // The rays first to last of the side, whose zone tells what earlier sides reach.
    RaySector(const RayField& field, std::uint32_t side, std::int32_t first, std::int32_t last,
              const SideZone& zone);

    std::int32_t FirstRay() const { return firstRay_; }
    std::int32_t LastRay() const { return lastRay_; }
    bool IsXMajor() const { return isXMajor_; }
    // The direction of the rays' steps, 1 or -1.
    std::int32_t Sign() const { return sign_; }
    // The direction in which the rays of the sector follow each other on a lane, 1 or -1.
    std::int32_t Travel() const { return isXMajor_ ? sign_ : -sign_; }

    // The same rays with a wider margin to both edges, in pixels.
    RaySector Narrowed(double margin) const;

    // The pixels that are the sector's alone, of a row or a column.
    PixelRange OwnOfRow(std::int32_t y) const { return Own(y, true); }
    PixelRange OwnOfColumn(std::int32_t x) const { return Own(x, false); }

private:
    // nx (x - cx) + ny (y - cy) is at least the threshold.
    struct Edge {
        std::int64_t nx;
        std::int64_t ny;
        std::int64_t threshold;
    };

    PixelRange Own(std::int32_t lane, bool isRow) const;

    RayField field_{};
    std::int32_t firstRay_ = 1;
    std::int32_t lastRay_ = 0;
    bool isXMajor_ = false;
    std::int32_t sign_ = 1;
    bool isBare_ = true;
    Edge edges_[2] = {};
};

// The sectors of a side, in the order of its rays: at most three, since along a side the major axis
// changes twice.
struct SideSectors {
    static constexpr int kMost = 3;

    RaySector sectors[kMost];
    int count = 0;

    SideSectors() = default;
    SideSectors(const RayField& field, std::uint32_t side, const SideZone& zone);

    SideSectors Narrowed(double margin) const;
};

}  // namespace mv
