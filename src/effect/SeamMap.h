// Where the sums of the pixels lie that more than one sector of rays may touch.
#pragma once

#include <cstdint>

#include "effect/RaySector.h"

namespace mv {

// Numbers the pixels that are no sector's own, row after row: the seams between sectors and the
// ground around the centre. Memory is the owner's; immutable once filled, so that any thread may
// ask.
class SeamMap {
public:
    // Neighbouring pixels of a row with neighbouring numbers.
    struct Run {
        std::int32_t first;
        std::int32_t end;
        std::uint32_t slot;  // of the first
    };

    static constexpr int kMostRuns = kSideCount * SideSectors::kMost + 1;

    static std::uint64_t Bytes(std::int32_t height) {
        return static_cast<std::uint64_t>(height) * kMostRuns * sizeof(Run);
    }

    // memory takes Bytes(height); sides has kSideCount entries.
    void Fill(void* memory, std::int32_t width, std::int32_t height, const SideSectors* sides);

    // How many pixels have a number.
    std::uint32_t Slots() const { return slots_; }

    // The runs of a row, from left to right, and behind the last one an empty one.
    const Run* RowRuns(std::int32_t y) const {
        return runs_ + static_cast<std::ptrdiff_t>(y) * kMostRuns;
    }

    static bool IsLast(const Run* rowRuns, const Run* run) {
        return run - rowRuns == kMostRuns || run->first == run->end;
    }

    // False when the pixel is some sector's own.
    bool Find(std::int32_t x, std::int32_t y, std::uint32_t& slot) const {
        const Run* runs = RowRuns(y);
        for (const Run* run = runs; !IsLast(runs, run) && run->first <= x; ++run) {
            if (x < run->end) {
                slot = run->slot + static_cast<std::uint32_t>(x - run->first);
                return true;
            }
        }
        return false;
    }

private:
    void FillRow(std::int32_t y, std::int32_t width, const SideSectors* sides);

    Run* runs_ = nullptr;
    std::uint32_t slots_ = 0;
};

}  // namespace mv
