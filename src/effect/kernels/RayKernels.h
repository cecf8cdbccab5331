// Hot loops of the blur, one body for each instruction set, chosen once at run time. All give the
// bytes of the plain form. Only plain data crosses this line: code compiled for one instruction
// set must not share inline functions with the rest of the module.
#pragma once

#include <cstddef>
#include <cstdint>

#include "effect/kernels/LaneSums.h"

namespace mv {

constexpr int kRaysInGroup = 4;

// Neighbouring rays of one side that walk the same rows (or columns) in lock step: one cache line
// of a row serves them all, and a pixel still gets its rays in order.
struct RayGroup {
    const float* image;         // first channel of minor coordinate 0 in the first row or column
    std::ptrdiff_t imageStep;   // floats to the next row or column, in the rays' direction
    std::ptrdiff_t imageMinor;  // floats to the next pixel on the minor axis
    std::int32_t imageMask;     // which bits of a minor coordinate count; -1 for all
    const LaneSums* sums;       // where scatter adds to
    std::int32_t lane;          // the first step's
    std::int32_t minorSize;
    std::int32_t steps;
    std::int32_t prefetch;  // pixels on the minor axis toward the next group; 0 for none
    double minor[kRaysInGroup];
    double slope[kRaysInGroup];
    double* lines;                     // running sums of the four lines, from the first step on
    double* last;                      // takes the last samples, as wide as an entry
    const double* line[kRaysInGroup];  // for scatter: entry 0 of each ray's line
};

// How long windows are and where they lie. Lengths in steps of the line.
struct WindowRule {
    double startDistance;  // from the centre to the line's first sample
    double holdout;        // within it windows have no length
    double strength;
    double zoomStart;
};

// Where the window of a step lies on the line, and what its sum is divided by. The sum is
// highKeep P[high] + highNext P[high + 1] - lowNext P[low - 1] - lowKeep P[low].
struct WindowPosition {
    double highKeep;
    double highNext;
    double lowNext;
    double lowKeep;
    double divisor;
    std::int32_t high;
    std::int32_t low;
};

// The windows of four rays' steps.
struct RayWindows {
    const WindowPosition* shared;  // from the first step on; null where each ray has its own
    WindowRule rules[kRaysInGroup];
    std::int32_t first[kRaysInGroup];    // the first step on each ray's line
    std::int32_t samples[kRaysInGroup];  // of each ray's line
};

// Doubles of one entry of the lines of a group: four for each ray, channels and padding, or, with
// one channel, one for each ray.
constexpr int EntryDoubles(int channels) {
    return channels == 1 ? kRaysInGroup : 4 * kRaysInGroup;
}

// Where a ray's channels lie in an entry.
constexpr int RayOffset(int channels, int ray) {
    return channels == 1 ? ray : 4 * ray;
}

struct RayKernels {
    // Samples steps entries of the lines and sums them onto the entry before. minor comes back as
    // the coordinates behind the last step.
    void (*sample[5])(RayGroup& group);
    // Adds each step's window mean, weighted, to the sums of its lane. With shared windows the
    // lines start together. minor comes back as in sample.
    void (*scatter[5])(RayGroup& group, const RayWindows& windows);
    // Both in one go, for windows that reach no farther than their step: steps are added when the
    // ones behind them have been sampled. lines and image are those of the step behind the first,
    // which has been sampled already; minor and lane are the first's, and minor comes back as that
    // of the step behind the last. line[] as in scatter.
    void (*blur[5])(RayGroup& group, const RayWindows& windows);
    // Fills the windows of steps from on, on a line of n samples, as many as make whole vectors,
    // and gives the first step that is left.
    std::int32_t (*fillWindows)(WindowPosition* windows, const WindowRule& rule, std::int32_t from,
                                std::int32_t end, std::int32_t n);
};

enum class InstructionSet { Plain, Sse2, Avx2, Avx512 };

// The widest set that this processor and system serve.
InstructionSet DetectInstructionSet() noexcept;

// For tests: all that follows uses this set; what the processor lacks is refused with false.
bool ForceInstructionSet(InstructionSet set) noexcept;
void UseDetectedInstructionSet() noexcept;

// Null where the plain form is to be used.
const RayKernels* SelectRayKernels() noexcept;

extern const RayKernels kRayKernelsSse2;
extern const RayKernels kRayKernelsAvx2;
extern const RayKernels kRayKernelsAvx512;

}  // namespace mv
