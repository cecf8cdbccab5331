#include "effect/RaySector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/RayFields.h"

namespace mv {
namespace {

using test::AllFields;
using test::WalkSide;

struct Sectors {
    SideZone zones[kSideCount];
    SideSectors sides[kSideCount];

    explicit Sectors(const RayField& field) {
        for (std::uint32_t side = 0; side < kSideCount; ++side) {
            zones[side] = SideZone(field, side);
            sides[side] = SideSectors(field, side, zones[side]);
        }
    }
};

bool Owns(const RaySector& sector, std::int32_t x, std::int32_t y) {
    return sector.OwnOfRow(y).Contains(x);
}

TEST(RaySector, SectorsTakeEveryRayOfASideInOrderAndWalkAlike) {
    for (const RayField& field : AllFields()) {
        const Sectors sectors(field);
        for (std::uint32_t side = 0; side < kSideCount; ++side) {
            std::int32_t next = 1;
            for (int i = 0; i < sectors.sides[side].count; ++i) {
                const RaySector& sector = sectors.sides[side].sectors[i];
                ASSERT_EQ(sector.FirstRay(), next);
                for (; next <= sector.LastRay(); ++next) {
                    const Ray ray = MakeRay(field, EndPixel(field, side, next));
                    ASSERT_EQ(ray.isXMajor, sector.IsXMajor());
                    ASSERT_EQ(ray.sign, sector.Sign());
                }
            }
            const std::int32_t rays = IsSideLit(field, side) ? RayCount(field, side) : 0;
            ASSERT_EQ(next, rays + 1);
        }
    }
}

TEST(RaySector, RowsAndColumnsAgreeOnWhatIsASectorsOwn) {
    for (const RayField& field : AllFields()) {
        const Sectors sectors(field);
        for (const SideSectors& side : sectors.sides) {
            for (int i = 0; i < side.count; ++i) {
                for (std::int32_t y = 0; y < field.height; ++y) {
                    for (std::int32_t x = 0; x < field.width; ++x) {
                        ASSERT_EQ(side.sectors[i].OwnOfRow(y).Contains(x),
                                  side.sectors[i].OwnOfColumn(x).Contains(y));
                    }
                }
            }
        }
    }
}

// A pixel of the narrowed sector has all its neighbours in the sector.
TEST(RaySector, NarrowedByTwoPixelsItKeepsTheNeighborsOfItsPixels) {
    for (const RayField& field : AllFields()) {
        const Sectors sectors(field);
        for (const SideSectors& side : sectors.sides) {
            for (int i = 0; i < side.count; ++i) {
                const RaySector& wide = side.sectors[i];
                const RaySector narrow = wide.Narrowed(5.0);
                for (std::int32_t y = 0; y < field.height; ++y) {
                    const PixelRange row = narrow.OwnOfRow(y);
                    for (std::int32_t x = row.first; x < row.end; ++x) {
                        for (std::int32_t v = std::max(y - 1, 0);
                             v <= std::min(y + 1, field.height - 1); ++v) {
                            ASSERT_TRUE(Owns(wide, x, v));
                            ASSERT_TRUE(x == 0 || Owns(wide, x - 1, v));
                            ASSERT_TRUE(x == field.width - 1 || Owns(wide, x + 1, v));
                        }
                    }
                }
            }
        }
    }
}

// The rays of a sector follow each other one way on each lane, or finished pixels would be touched
// again.
TEST(RaySector, RaysTravelOneWay) {
    for (const RayField& field : AllFields()) {
        const Sectors sectors(field);
        for (std::uint32_t side = 0; side < kSideCount; ++side) {
            for (int i = 0; i < sectors.sides[side].count; ++i) {
                const RaySector& sector = sectors.sides[side].sectors[i];
                const std::int32_t lanes = sector.IsXMajor() ? field.width : field.height;
                std::vector<std::int32_t> reached(static_cast<std::size_t>(lanes), INT32_MIN / 2);
                for (std::int32_t k = sector.FirstRay(); k <= sector.LastRay(); ++k) {
                    const Ray ray = MakeRay(field, EndPixel(field, side, k));
                    double minor = ray.minor;
                    for (std::int32_t step = 0; step < ray.steps; ++step, minor += ray.slope) {
                        const MinorPlace place =
                            PlaceOf(minor, ray.isXMajor ? field.height : field.width);
                        const std::int32_t at = sector.Travel() * place.first;
                        auto& most = reached[static_cast<std::size_t>(ray.start + ray.sign * step)];
                        ASSERT_GE(at, most - 1) << "a place of room is all that there is";
                        most = std::max(most, at);
                    }
                }
            }
        }
    }
}

TEST(RaySector, NoOtherSectorTouchesWhatIsOnesOwn) {
    for (const RayField& field : AllFields()) {
        const Sectors sectors(field);
        for (std::uint32_t side = 0; side < kSideCount; ++side) {
            WalkSide(field, side,
                     [&](const Ray& ray, std::int32_t, std::int32_t x, std::int32_t y) {
                         int owners = 0;
                         bool isOwn = false;
                         for (std::uint32_t other = 0; other < kSideCount; ++other) {
                             for (int i = 0; i < sectors.sides[other].count; ++i) {
                                 const RaySector& sector = sectors.sides[other].sectors[i];
                                 if (Owns(sector, x, y)) {
                                     ++owners;
                                     isOwn = other == side && sector.IsXMajor() == ray.isXMajor &&
                                             sector.Sign() == ray.sign;
                                 }
                             }
                         }
                         ASSERT_LE(owners, 1);
                         ASSERT_TRUE(owners == 0 || isOwn)
                             << x << ", " << y << " of " << field.width << " x " << field.height
                             << ", centre " << field.centerX << ", " << field.centerY;
                         ASSERT_TRUE(owners == 0 || sectors.zones[side].Contains(x, y));
                     });
        }
    }
}

}  // namespace
}  // namespace mv
