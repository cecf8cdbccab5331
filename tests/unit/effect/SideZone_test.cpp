#include "effect/SideZone.h"

#include <gtest/gtest.h>

#include "support/RayFields.h"

namespace mv {
namespace {

using test::AllFields;
using test::WalkSide;

TEST(SideZone, HoldsNoPixelThatAnEarlierSideReaches) {
    for (const RayField& field : AllFields()) {
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
    for (const RayField& field : AllFields()) {
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
