#include "effect/SeamMap.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "support/RayFields.h"

namespace mv {
namespace {

struct FilledMap {
    SideZone zones[kSideCount];
    SideSectors sides[kSideCount];
    std::vector<unsigned char> memory;
    SeamMap map;

    explicit FilledMap(const RayField& field) : memory(SeamMap::Bytes(field.height)) {
        for (std::uint32_t side = 0; side < kSideCount; ++side) {
            zones[side] = SideZone(field, side);
            sides[side] = SideSectors(field, side, zones[side]);
        }
        map.Fill(memory.data(), field.width, field.height, sides);
    }

    bool IsSomeSectorsOwn(std::int32_t x, std::int32_t y) const {
        for (const SideSectors& side : sides) {
            for (int i = 0; i < side.count; ++i) {
                if (side.sectors[i].OwnOfRow(y).Contains(x)) {
                    return true;
                }
            }
        }
        return false;
    }
};

TEST(SeamMap, NumbersThePixelsThatAreNoSectorsOwnWithoutGaps) {
    for (const RayField& field : test::AllFields()) {
        const FilledMap filled(field);
        std::uint32_t next = 0;
        for (std::int32_t y = 0; y < field.height; ++y) {
            for (std::int32_t x = 0; x < field.width; ++x) {
                std::uint32_t slot = 0;
                const bool isFound = filled.map.Find(x, y, slot);
                ASSERT_NE(isFound, filled.IsSomeSectorsOwn(x, y)) << x << ", " << y;
                if (isFound) {
                    ASSERT_EQ(slot, next);
                    ++next;
                }
            }
        }
        EXPECT_EQ(filled.map.Slots(), next);
    }
}

TEST(SeamMap, RunsOfARowAreWhatCanBeFoundInIt) {
    const RayField field{120, 80, 47, 33};
    const FilledMap filled(field);
    std::uint32_t found = 0;
    for (std::int32_t y = 0; y < field.height; ++y) {
        const SeamMap::Run* runs = filled.map.RowRuns(y);
        for (const SeamMap::Run* run = runs; !SeamMap::IsLast(runs, run); ++run) {
            for (std::int32_t x = run->first; x < run->end; ++x, ++found) {
                std::uint32_t slot = 0;
                ASSERT_TRUE(filled.map.Find(x, y, slot));
                EXPECT_EQ(slot, run->slot + static_cast<std::uint32_t>(x - run->first));
            }
        }
    }
    EXPECT_EQ(found, filled.map.Slots());
}

// That is what keeps the memory of a blur small.
TEST(SeamMap, HoldsLittleOfALargePicture) {
    const FilledMap filled({6000, 4000, 3000, 2000});
    EXPECT_LT(filled.map.Slots(), 24'000'000u / 50);
    EXPECT_GT(filled.map.Slots(), 0u);
}

}  // namespace
}  // namespace mv
