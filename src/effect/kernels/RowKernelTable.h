// The row kernels of one instruction set. Included inside the unnamed namespace of a kernel
// source file, behind the Vector4.

#include "effect/kernels/PixelAccess.h"

#include "effect/kernels/RowKernelBody.h"

#include "effect/kernels/LinearizeBody.h"

#include "effect/kernels/ToneCurveBody.h"

constexpr RowKernels kTable = {
    &Linearize,
    {nullptr, &ShiftToDouble<1>, &ShiftToDouble<2>, &ShiftToDouble<3>, &ShiftToDouble<4>},
    {nullptr, &ShiftToFloat<1>, &ShiftToFloat<2>, &ShiftToFloat<3>, &ShiftToFloat<4>},
    {nullptr, &Normalize<1>, &Normalize<2>, &Normalize<3>, &Normalize<4>},
    &ToneIndices,
    &ToneFloats,
    {nullptr, &BlendOver<1>, &BlendOver<2>}};
