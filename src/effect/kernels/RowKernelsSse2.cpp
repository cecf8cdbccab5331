#include "effect/kernels/RowKernels.h"

#include <immintrin.h>

#include <cmath>

namespace mv {
namespace {

#include "effect/kernels/VectorSse2.h"

#include "effect/kernels/PixelAccess.h"

#include "effect/kernels/RowKernelBody.h"

#include "effect/kernels/LinearizeBody.h"

#include "effect/kernels/ToneCurveBody.h"

}  // namespace

extern const RowKernels kRowKernelsSse2 = {
    &Linearize,
    {nullptr, &ShiftToDouble<1>, &ShiftToDouble<2>, &ShiftToDouble<3>, &ShiftToDouble<4>},
    {nullptr, &ShiftToFloat<1>, &ShiftToFloat<2>, &ShiftToFloat<3>, &ShiftToFloat<4>},
    {nullptr, &Normalize<1>, &Normalize<2>, &Normalize<3>, &Normalize<4>},
    &ToneIndices,
    &ToneFloats,
    {nullptr, &BlendOver<1>, &BlendOver<2>}};

}  // namespace mv
