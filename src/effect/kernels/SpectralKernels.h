// Hot loops of the "abberative" blur: four neighbouring rays, one in each lane.
#pragma once

#include <cstdint>

#include "effect/kernels/RayKernels.h"

namespace mv {

// Lines of four rays: entry k, channel c of ray g lies at (k * channels + c) * 4 + g. Entry 0 is
// the first common step; a ray's line goes from two entries before its own first step to two behind
// its last. up and down hold running sums, once and twice, upward and downward; down1 holds the
// samples until they are summed.
struct SpectralLines {
    double* up1;
    double* up2;
    double* down1;
    double* down2;
};

// Where the windows of four rays lie. Lengths in steps of each ray's line.
struct SpectralRule {
    double startDistance[kRaysInGroup];
    double holdout[kRaysInGroup];
    double lead[kRaysInGroup];   // samples of each ray's line before entry 0
    double steps[kRaysInGroup];  // and all of them
    double fewestSteps;
    double strength;
    double zoomStart;
    bool isShared;   // neither distance nor holdout: the four rays' windows are the same, and
                     // there are no leads
    bool areAsLong;  // and so are their lines
    bool invertGradient;
};

struct SpectralKernels {
    // Samples group.steps entries of the four lines, from 0 on, and sums them upward onto entry -1.
    // prefix and last are not used.
    void (*sample[5])(RayGroup& group, const SpectralLines& lines);
    // Sums samples from to -2 downward onto entry from + 1, for all four rays; what lies above in
    // longer lines is the caller's.
    void (*sumDown[5])(const SpectralLines& lines, std::int32_t from);
    // Adds the windows of the steps from on, group.steps of them, to the sums of their lanes.
    // colors is channels, or one less when the last is alpha.
    void (*scatter[5][2])(RayGroup& group, const SpectralLines& lines, const SpectralRule& rule,
                          std::int32_t from);
};

// Null where the plain form is to be used.
const SpectralKernels* SelectSpectralKernels() noexcept;

extern const SpectralKernels kSpectralKernelsSse2;
extern const SpectralKernels kSpectralKernelsAvx2;
extern const SpectralKernels kSpectralKernelsAvx512;

}  // namespace mv
