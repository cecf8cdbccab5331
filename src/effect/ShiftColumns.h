// The columns of a row that is read with a shift of less than a pixel.
#pragma once

#include <cstdint>

#include "effect/kernels/RowKernels.h"

namespace mv {

// For width columns at x + shift: the column left of the place, truncated toward zero, the one to
// its right, the last having none, and the share of the right one, which changes where x + shift
// is rounded to fewer places. memory is the caller's.
class ShiftColumns {
public:
    static constexpr std::uint64_t Bytes(std::int32_t width) {
        return static_cast<std::uint64_t>(width) * (sizeof(double) + 3 * sizeof(std::int32_t));
    }

    void Fill(void* memory, std::int32_t width, double shift) {
        auto* share = static_cast<double*>(memory);
        auto* left = reinterpret_cast<std::int32_t*>(share + width);
        std::int32_t* right = left + width;
        std::int32_t* runEnds = right + width;
        for (std::int32_t x = 0; x < width; ++x) {
            const double place = x + shift;
            left[x] = static_cast<std::int32_t>(place);
            right[x] = left[x] == width - 1 ? left[x] : left[x] + 1;
            share[x] = place - left[x];
        }
        columns_ = {left, right, share, runEnds};
        for (std::int32_t x = 1; x <= width; ++x) {
            if (x == width || !IsNextInRun(x)) {
                *runEnds++ = x;
            }
        }
    }

    const ShiftedColumns& Get() const { return columns_; }

private:
    bool IsNextInRun(std::int32_t x) const {
        return columns_.share[x] == columns_.share[x - 1] &&
               columns_.left[x] == columns_.left[x - 1] + 1 &&
               columns_.right[x] == columns_.right[x - 1] + 1;
    }

    ShiftedColumns columns_{};
};

}  // namespace mv
