// The instruction sets that tests can force here.
#pragma once

#include <vector>

#include "effect/kernels/RayKernels.h"

namespace mv::test {

// All that this processor serves, the plain form first.
inline std::vector<InstructionSet> ServedInstructionSets() {
    std::vector<InstructionSet> served;
    for (const InstructionSet set : {InstructionSet::Plain, InstructionSet::Sse2,
                                     InstructionSet::Avx2, InstructionSet::Avx512}) {
        if (set <= DetectInstructionSet()) {
            served.push_back(set);
        }
    }
    return served;
}

// Those with kernels.
inline std::vector<InstructionSet> FastInstructionSets() {
    std::vector<InstructionSet> served = ServedInstructionSets();
    served.erase(served.begin());
    return served;
}

}  // namespace mv::test
