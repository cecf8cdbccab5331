// The sums of the few pixels that rays pass at present. Only plain data, as in RayKernels.h.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mv {

// Pixels of a lane that are open at a time: a power of two, and more than four neighbouring rays
// and the pixel behind them take.
constexpr std::int32_t kOpenPixels = 8;

// A lane is a row (or a column) that rays cross. Places along it count in the direction in which
// the rays of a sector follow each other: pixel times travel.
struct SumLane {
    std::int32_t next;  // of the first open pixel; kUnopened before the first ray
    std::int32_t
        ownFrom;          // from ownFrom to ownEnd - 1 the pixel that is closed and the one that is
    std::int32_t ownEnd;  // then opened are the sector's alone
    std::int32_t start;   // where the lane was opened
};

constexpr std::int32_t kUnopened = INT32_MIN;

// Where a sector's rays add to. A pixel that all rays have passed is divided by its weight and
// written to out at once, so that no sums are kept of the picture as a whole; what other sectors
// reach too is the owner's, who also fetches what a pixel has already when it is opened.
struct LaneSums {
    SumLane* lanes;  // in the direction of the rays' steps
    float* sums;     // kOpenPixels times channels and weight a lane, pixel p at p mod kOpenPixels
    float* out;      // pixel 0 of lane 0
    std::ptrdiff_t outStep;   // floats to the next lane
    std::ptrdiff_t outMinor;  // floats to the next pixel of a lane
    std::int32_t outMask;     // which bits of a pixel's number count; -1 for all
    std::int32_t travel;      // 1 or -1
    // Opens the lane for a ray that touches the pixel and the next one.
    void (*open)(void* owner, std::int32_t lane, std::int32_t pixel);
    // Takes the pixel out of the lane and opens the one kOpenPixels on.
    void (*exchange)(void* owner, std::int32_t lane, std::int32_t pixel);
    void* owner;
};

}  // namespace mv
