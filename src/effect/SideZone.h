// Which pixels a side of the blur may write at once while the other sides run.
#pragma once

#include <cstdint>

#include "effect/RayGeometry.h"

namespace mv {

// The pixels that no earlier side can reach, as a union-free set: the intersection of half-planes
// that each keep a margin from one earlier side's rays. What a side contributes elsewhere goes to
// its list and is added in side order afterwards, so the sums are those of the four sides one
// after the other, whatever the threads do. Immutable once built; one per side.
class SideZone {
public:
    SideZone() = default;
    SideZone(const RayField& field, std::uint32_t side);

    bool IsEmpty() const { return isEmpty_; }

    bool Contains(std::int32_t x, std::int32_t y) const {
        if (isEmpty_) {
            return false;
        }
        for (int i = 0; i < count_; ++i) {
            if (planes_[i].Distance(x, y) < planes_[i].threshold) {
                return false;
            }
        }
        return true;
    }

    // From this step on, every pixel that the ray touches lies in the zone.
    std::int32_t SafeStep(const Ray& ray) const;

private:
    // nx (x - cx) + ny (y - cy), against the margin times the normal's length.
    struct HalfPlane {
        std::int64_t nx;
        std::int64_t ny;
        std::int64_t centerX;
        std::int64_t centerY;
        std::int64_t threshold;
        double length;

        std::int64_t Distance(std::int64_t x, std::int64_t y) const {
            return nx * (x - centerX) + ny * (y - centerY);
        }
    };

    struct Direction {
        std::int64_t x;
        std::int64_t y;
    };

    // The extreme directions of a side's rays.
    struct Cone {
        Direction first;
        Direction last;
    };

    static Cone ConeOf(const RayField& field, std::uint32_t side);
    bool Separate(const RayField& field, std::uint32_t side, std::uint32_t earlier);

    HalfPlane planes_[kSideCount] = {};
    int count_ = 0;
    bool isEmpty_ = false;
};

}  // namespace mv
