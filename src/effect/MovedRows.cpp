#include "effect/MovedRows.h"

#include <algorithm>

namespace mv {
namespace {

constexpr int kMostChannels = 4;

}  // namespace

void MovedRows::SetUp(void* memory, const ShiftedPicture& picture, const ShiftedColumns& columns,
                      const RowKernels& kernels, const Source& source) {
    memory_ = static_cast<float*>(memory);
    picture_ = picture;
    columns_ = columns;
    kernels_ = &kernels;
    source_ = &source;
    held_[0] = {};
    held_[1] = {};
}

void MovedRows::Fill(std::int32_t y, std::int32_t from, std::int32_t end, float* out) {
    // Each pixel onto itself: a neighbour that is no number stays out, even as nothing of it.
    if (picture_.dx == 0.0 && picture_.dy == 0.0) {
        (*source_)(y, from, end, out);
        return;
    }
    const std::ptrdiff_t channels = picture_.channels;
    const double py = y + picture_.dy;
    const auto iy = static_cast<std::int32_t>(py);
    const std::int32_t below = iy == picture_.height - 1 ? iy : iy + 1;
    const bool isExtrapolated = picture_.dx < 0.0 && from == 0 && picture_.width > 1;
    const std::int32_t first = columns_.left[from];
    const std::int32_t behind = columns_.right[isExtrapolated ? std::max(end - 1, 1) : end - 1] + 1;
    const float* lower = below == y ? nullptr : MovedNeighbor(below, first, behind);
    const float* upper = iy == y ? nullptr : Fetch(iy, first, behind);
    float* own = Fetch(y, first, behind);
    upper = upper == nullptr ? own : upper;
    lower = lower == nullptr ? own : lower;
    const auto shift = kernels_->shiftToFloat[picture_.channels];
    const double share = py - iy;
    float* base = out - from * channels;
    if (!isExtrapolated) {
        shift(base, upper, lower, columns_, share, from, end);
        return;
    }
    // The first column looks at its neighbour as moved.
    float pair[2 * kMostChannels];
    float kept[kMostChannels];
    shift(pair, upper, lower, columns_, share, 1, 2);
    shift(base, upper, lower, columns_, share, 1, end);
    std::copy_n(own + channels, channels, kept);
    std::copy_n(pair + channels, channels, own + channels);
    shift(base, upper, lower, columns_, share, 0, 1);
    std::copy_n(kept, channels, own + channels);
}

// The row below as it was, or, below a first row that extrapolates, as moved.
const float* MovedRows::MovedNeighbor(std::int32_t row, std::int32_t first, std::int32_t end) {
    if (picture_.dy >= 0.0) {
        return Fetch(row, first, end);
    }
    float* moved = Scratch(2);
    Fill(row, first, end, moved + first * picture_.channels);
    return moved;
}

float* MovedRows::Fetch(std::int32_t row, std::int32_t first, std::int32_t end) {
    const std::uint32_t which = static_cast<std::uint32_t>(row) & 1;
    float* scratch = Scratch(which);
    Held& held = held_[which];
    const auto read = [&](std::int32_t from, std::int32_t behind) {
        (*source_)(row, from, behind, scratch + from * std::ptrdiff_t{picture_.channels});
    };
    if (held.row != row || first > held.end || end < held.first) {
        read(first, end);
        held = {row, first, end};
        return scratch;
    }
    if (first < held.first) {
        read(first, held.first);
        held.first = first;
    }
    if (end > held.end) {
        read(held.end, end);
        held.end = end;
    }
    return scratch;
}

}  // namespace mv
