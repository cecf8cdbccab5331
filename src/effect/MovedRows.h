// Rows of a picture that is shifted by less than a pixel, made from rows as they were.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "effect/ShiftColumns.h"
#include "effect/kernels/RowKernels.h"

namespace mv {

// A working image of so many pixels, shifted by dx and dy, -0.5 to 0.5: pixel (x, y) is the
// bilinear sample at (x + dx, y + dy).
struct ShiftedPicture {
    std::int32_t width = 0;
    std::int32_t height = 0;
    int channels = 0;
    double dx = 0.0;
    double dy = 0.0;
};

// Gives runs of the shifted picture in any order, quickest for rows that follow each other, since
// it holds what it asked for last of two rows. Beside the first column and row the sample
// extrapolates from a neighbour that has moved already, as in MoveSubPixelImageFilter. One
// thread's; memory and columns are the caller's.
class MovedRows {
public:
    // Puts pixels from to end - 1 of row y as it was to out, packed.
    using Source =
        std::function<void(std::int32_t y, std::int32_t from, std::int32_t end, float* out)>;

    // False for shifts so small that rows or columns far out do not feel them: there each neighbour
    // would be one that has moved already.
    static bool Serves(const ShiftedPicture& picture) {
        const std::int32_t bottom = picture.height - 1;
        const std::int32_t right = picture.width - 1;
        return (picture.dy >= 0.0 || bottom + picture.dy < bottom) &&
               (picture.dx >= 0.0 || right + picture.dx < right);
    }

    static std::uint64_t Bytes(const ShiftedPicture& picture) {
        return 3 * sizeof(float) * static_cast<std::uint64_t>(picture.width) *
               static_cast<std::uint64_t>(picture.channels);
    }

    void SetUp(void* memory, const ShiftedPicture& picture, const ShiftedColumns& columns,
               const RowKernels& kernels, const Source& source);

    // Puts pixels from to end - 1 of row y to out, packed.
    void Fill(std::int32_t y, std::int32_t from, std::int32_t end, float* out);

private:
    // Columns first to end - 1 of a row as it was.
    struct Held {
        std::int32_t row = -1;
        std::int32_t first = 0;
        std::int32_t end = 0;
    };

    float* Fetch(std::int32_t row, std::int32_t first, std::int32_t end);
    const float* MovedNeighbor(std::int32_t row, std::int32_t first, std::int32_t end);
    float* Scratch(std::uint32_t which) const {
        return memory_ + static_cast<std::ptrdiff_t>(which) * picture_.width * picture_.channels;
    }

    ShiftedPicture picture_;
    ShiftedColumns columns_{};
    const RowKernels* kernels_ = nullptr;
    const Source* source_ = nullptr;
    float* memory_ = nullptr;
    Held held_[2];
};

}  // namespace mv
