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

bool HasAvx2() noexcept {
#if defined(_MSC_VER)
    int leaf[4];
    __cpuid(leaf, 1);
    const bool savesRegisters = (leaf[2] & (1 << 27)) != 0 && (leaf[2] & (1 << 28)) != 0;
    if (!savesRegisters || (_xgetbv(0) & 6) != 6) {
        return false;
    }
    __cpuidex(leaf, 7, 0);
    return (leaf[1] & (1 << 5)) != 0;
#else
    return __builtin_cpu_supports("avx2") != 0;
#endif
}

InstructionSet CurrentInstructionSet() noexcept {
    const int forced = forcedSet;
    return forced < 0 ? DetectInstructionSet() : static_cast<InstructionSet>(forced);
}

}  // namespace

InstructionSet DetectInstructionSet() noexcept {
    static const InstructionSet detected = HasAvx2() ? InstructionSet::Avx2 : InstructionSet::Sse2;
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
        case InstructionSet::Avx2:
            return &kRayKernelsAvx2;
        case InstructionSet::Sse2:
            return &kRayKernelsSse2;
        default:
            return nullptr;
    }
}

}  // namespace mv
