#include "effect/SideZone.h"

#include <gtest/gtest.h>

#include <vector>

namespace mv {
namespace {

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

std::vector<RayField> Fields() {
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

TEST(SideZone, HoldsNoPixelThatAnEarlierSideReaches) {
    for (const RayField& field : Fields()) {
        SideZone zones[kSideCount];
        for (std::uint32_t side = 0; side < kSideCount; ++side) {
            zones[side] = SideZone(field, side);
        }
        for (std::uint32_t side = 0; side < kSideCount; ++side) {
            WalkSide(field, side, [&](const Ray&, std::int32_t, std::int32_t x, std::int32_t y) {
                for (std::uint32_t later = side + 1; later < kSideCount; ++later) {
                    if (IsSideLit(field, later)) {
                        ASSERT_FALSE(zones[later].Contains(x, y))
                            << "sides " << side << " and " << later << " at " << x << ", " << y
                            << " of " << field.width << " x " << field.height << ", centre "
                            << field.centerX << ", " << field.centerY;
                    }
                }
            });
        }
    }
}

TEST(SideZone, HoldsEveryPixelOfARayFromTheSafeStepOn) {
    for (const RayField& field : Fields()) {
        for (std::uint32_t side = 0; side < kSideCount; ++side) {
            const SideZone zone(field, side);
            WalkSide(field, side,
                     [&](const Ray& ray, std::int32_t i, std::int32_t x, std::int32_t y) {
                         if (i >= zone.SafeStep(ray)) {
                             ASSERT_TRUE(zone.Contains(x, y)) << x << ", " << y;
                         }
                     });
        }
    }
}

TEST(SideZone, LeavesMostOfAPictureToDirectAdding) {
    const RayField field{600, 400, 300, 200};
    std::size_t touched = 0;
    std::size_t listed = 0;
    for (std::uint32_t side = 0; side < kSideCount; ++side) {
        const SideZone zone(field, side);
        WalkSide(field, side, [&](const Ray&, std::int32_t, std::int32_t x, std::int32_t y) {
            ++touched;
            listed += zone.Contains(x, y) ? 0u : 1u;
        });
    }
    EXPECT_LT(listed * 20, touched);
    EXPECT_GT(listed, 0u);
}

}  // namespace
}  // namespace mv
