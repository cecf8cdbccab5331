// How four neighbouring rays walk in lock step.
#pragma once

#include <algorithm>
#include <cstdint>

#include "effect/RayGeometry.h"
#include "effect/kernels/RayKernels.h"

namespace mv {

// Rays that share the major axis and the direction, and the rows (or columns) that all of them
// pass. What a ray has before them (lead) and behind them is walked alone: no other ray of the
// group may then overtake it in a pixel, since rows are either common or nobody's in common.
struct RayGroupPlan {
    Ray rays[kRaysInGroup];
    std::int32_t lead[kRaysInGroup];
    std::int32_t common;
    std::int32_t firstMajor;  // the first common row or column

    // False when the rays do not walk alike.
    bool Make(const Ray* candidates) {
        const Ray& first = candidates[0];
        std::int32_t start = first.start * first.sign;
        std::int32_t end = start + first.steps;
        for (int g = 0; g < kRaysInGroup; ++g) {
            const Ray& ray = candidates[g];
            if (ray.isXMajor != first.isXMajor || ray.sign != first.sign || ray.steps == 0) {
                return false;
            }
            start = std::max(start, ray.start * ray.sign);
            end = std::min(end, ray.start * ray.sign + ray.steps);
            rays[g] = ray;
        }
        common = end - start;
        firstMajor = start * first.sign;
        for (int g = 0; g < kRaysInGroup; ++g) {
            lead[g] = start - rays[g].start * rays[g].sign;
        }
        return common > 0;
    }

    // Where the next group will pass, for rays that step from row to row: a few pixels on.
    std::int32_t Prefetch() const {
        constexpr std::int32_t kPixelsAhead = 6;
        if (rays[0].isXMajor) {
            return 0;
        }
        const double turn = rays[kRaysInGroup - 1].slope - rays[0].slope;
        return turn < 0.0 ? -kPixelsAhead : kPixelsAhead;
    }
};

}  // namespace mv
