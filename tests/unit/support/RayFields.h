// Pictures with their centres in all kinds of places, and the pixels that their rays touch.
#pragma once

#include <utility>
#include <vector>

#include "effect/RayGeometry.h"

namespace mv::test {

// Every pixel that a ray of the side touches, by walking it.
template <class Visitor>
void WalkSide(const RayField& field, std::uint32_t side, Visitor visit) {
    if (!IsSideLit(field, side)) {
        return;
    }
    for (std::int32_t k = 1; k <= RayCount(field, side); ++k) {
        const Ray ray = MakeRay(field, EndPixel(field, side, k));
        double minor = ray.minor;
        for (std::int32_t i = 0; i < ray.steps; ++i, minor += ray.slope) {
            const MinorPlace place = PlaceOf(minor, ray.isXMajor ? field.height : field.width);
            if (!place.isInside) {
                continue;
            }
            const std::int32_t major = ray.start + ray.sign * i;
            for (const std::int32_t at : {place.first, place.second}) {
                visit(ray, i, ray.isXMajor ? major : at, ray.isXMajor ? at : major);
            }
        }
    }
}

inline std::vector<RayField> AllFields() {
    std::vector<RayField> fields;
    for (const auto& [width, height] :
         {std::pair{40, 30}, {7, 90}, {90, 7}, {2, 60}, {60, 2}, {33, 33}, {1, 9}, {9, 1}}) {
        for (const std::int32_t x : {-1000000, -40, -1, 0, 1, width / 2, width - 2, width - 1,
                                     width, width + 25, 1 << 30}) {
            for (const std::int32_t y : {-(1 << 30), -17, -1, 0, 1, height / 2, height - 2,
                                         height - 1, height, height + 60}) {
                fields.push_back({width, height, x, y});
            }
        }
    }
    return fields;
}

}  // namespace mv::test
