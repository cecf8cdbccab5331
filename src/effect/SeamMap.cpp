#include "effect/SeamMap.h"

#include <algorithm>
#include <cstring>

namespace mv {

void SeamMap::Fill(void* memory, std::int32_t width, std::int32_t height,
                   const SideSectors* sides) {
    runs_ = static_cast<Run*>(memory);
    slots_ = 0;
    std::memset(memory, 0, Bytes(height));
    for (std::int32_t y = 0; y < height; ++y) {
        FillRow(y, width, sides);
    }
}

void SeamMap::FillRow(std::int32_t y, std::int32_t width, const SideSectors* sides) {
    PixelRange own[kMostRuns];
    int count = 0;
    for (std::uint32_t side = 0; side < kSideCount; ++side) {
        for (int i = 0; i < sides[side].count; ++i) {
            const PixelRange range = sides[side].sectors[i].OwnOfRow(y);
            if (range.IsEmpty()) {
                continue;
            }
            int at = count++;
            for (; at > 0 && own[at - 1].first > range.first; --at) {
                own[at] = own[at - 1];
            }
            own[at] = range;
        }
    }
    own[count] = {width, width};
    Run* run = runs_ + static_cast<std::ptrdiff_t>(y) * kMostRuns;
    std::int32_t from = 0;
    for (int i = 0; i <= count; ++i) {
        if (from < own[i].first) {
            *run++ = {from, own[i].first, slots_};
            slots_ += static_cast<std::uint32_t>(own[i].first - from);
        }
        from = std::max(from, own[i].end);
    }
}

}  // namespace mv
