#include <atomic>

#include "effect/kernels/RayKernels.h"
#include "effect/kernels/RowKernels.h"
#include "effect/kernels/SpectralKernels.h"

#if defined(_MSC_VER)
#include <immintrin.h>
#include <intrin.h>
#endif

namespace mv {
namespace {

std::atomic<int> forcedSet{-1};

#if defined(_MSC_VER)
// Whether the system keeps these parts of the processor's state, and which extensions there are.
bool Saves(unsigned long long parts) noexcept {
    int leaf[4];
    __cpuid(leaf, 1);
    const bool hasAvx = (leaf[2] & (1 << 27)) != 0 && (leaf[2] & (1 << 28)) != 0;
    return hasAvx && (_xgetbv(0) & parts) == parts;
}

bool HasExtensions(unsigned bits) noexcept {
    int leaf[4];
    __cpuidex(leaf, 7, 0);
    return (static_cast<unsigned>(leaf[1]) & bits) == bits;
}

bool HasAvx2() noexcept {
    return Saves(0x06) && HasExtensions(1u << 5);
}

// With the parts for short vectors and for all sizes of numbers: F, DQ, BW and VL.
bool HasAvx512() noexcept {
    return Saves(0xE6) && HasExtensions((1u << 16) | (1u << 17) | (1u << 30) | (1u << 31));
}
#else
bool HasAvx2() noexcept {
    return __builtin_cpu_supports("avx2") != 0;
}

// With the parts for short vectors and for all sizes of numbers.
bool HasAvx512() noexcept {
    return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
           __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vl") != 0;
}
#endif

InstructionSet Detect() noexcept {
    if (!HasAvx2()) {
        return InstructionSet::Sse2;
    }
    return HasAvx512() ? InstructionSet::Avx512 : InstructionSet::Avx2;
}

InstructionSet CurrentInstructionSet() noexcept {
    const int forced = forcedSet;
    return forced < 0 ? DetectInstructionSet() : static_cast<InstructionSet>(forced);
}

}  // namespace

InstructionSet DetectInstructionSet() noexcept {
    static const InstructionSet detected = Detect();
    return detected;
}

bool ForceInstructionSet(InstructionSet set) noexcept {
    if (set > DetectInstructionSet()) {
        return false;
    }
    forcedSet = static_cast<int>(set);
    return true;
}

void UseDetectedInstructionSet() noexcept {
    forcedSet = -1;
}

const RowKernels* SelectRowKernels() noexcept {
    switch (CurrentInstructionSet()) {
        case InstructionSet::Avx512:
            return &kRowKernelsAvx512;
        case InstructionSet::Avx2:
            return &kRowKernelsAvx2;
        case InstructionSet::Sse2:
            return &kRowKernelsSse2;
        default:
            return nullptr;
    }
}

const SpectralKernels* SelectSpectralKernels() noexcept {
    switch (CurrentInstructionSet()) {
        case InstructionSet::Avx512:
            return &kSpectralKernelsAvx512;
        case InstructionSet::Avx2:
            return &kSpectralKernelsAvx2;
        case InstructionSet::Sse2:
            return &kSpectralKernelsSse2;
        default:
            return nullptr;
    }
}

const RayKernels* SelectRayKernels() noexcept {
    switch (CurrentInstructionSet()) {
        case InstructionSet::Avx512:
            return &kRayKernelsAvx512;
        case InstructionSet::Avx2:
            return &kRayKernelsAvx2;
        case InstructionSet::Sse2:
            return &kRayKernelsSse2;
        default:
            return nullptr;
    }
}

}  // namespace mv
