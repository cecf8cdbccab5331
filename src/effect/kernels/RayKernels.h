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
    const LaneSums* sums;       // where scatter adds to
    std::int32_t lane;          // the first step's
    std::int32_t minorSize;
    std::int32_t steps;
    std::ptrdiff_t prefetch;  // pixels on the minor axis toward the next group; 0 for none
    double minor[kRaysInGroup];
    double slope[kRaysInGroup];
    double* prefix[kRaysInGroup];  // running sums, entry 0 is the first step's
    double* last[kRaysInGroup];    // takes the last sample, as wide as an entry
};

// Where the windows of the steps lie on the line, and what their sums are divided by. The sum is
// highKeep P[high] + highNext P[high + 1] - lowNext P[low - 1] - lowKeep P[low].
struct WindowPositions {
    double* highKeep;
    double* highNext;
    double* lowNext;
    double* lowKeep;
    double* divisor;
    std::int32_t* high;
    std::int32_t* low;
};

// Doubles of one prefix entry for so many channels.
constexpr int PrefixStride(int channels) {
    return channels == 1 ? 2 : 4;
}

struct RayKernels {
    // Samples steps entries of each ray's line and sums them onto entry -1. minor comes back as
    // the coordinates behind the last step.
    void (*sample[5])(RayGroup& group);
    // Adds each step's window mean, weighted, to the sums of its lane, all opened before.
    // windows[g] belongs to ray g's first step, prefix[g] to entry 0 of its line. minor comes back
    // as in sample.
    void (*scatter[5])(RayGroup& group, const WindowPositions* windows);
};

enum class InstructionSet { Plain, Sse2, Avx2 };

// The widest set that this processor and system serve.
InstructionSet DetectInstructionSet() noexcept;

// For tests: all that follows uses this set; what the processor lacks is refused with false.
bool ForceInstructionSet(InstructionSet set) noexcept;
void UseDetectedInstructionSet() noexcept;

// Null where the plain form is to be used.
const RayKernels* SelectRayKernels() noexcept;

extern const RayKernels kRayKernelsSse2;
extern const RayKernels kRayKernelsAvx2;

}  // namespace mv
