#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "effect/kernels/RayKernels.h"

namespace mv {
namespace {

#include "effect/kernels/VectorAvx2.h"

#include "effect/kernels/PixelAccess.h"

#include "effect/kernels/RaySumsBody.h"

#include "effect/kernels/WindowKernelBody.h"

#include "effect/kernels/RayKernelBody.h"

}  // namespace

extern const RayKernels kRayKernelsAvx2 = {
    {nullptr, &Sample<1>, &Sample<2>, &Sample<3>, &Sample<4>},
    {nullptr, &Scatter<1>, &Scatter<2>, &Scatter<3>, &Scatter<4>},
    {nullptr, &Blur<1>, &Blur<2>, &Blur<3>, &Blur<4>},
    &FillWindows};

}  // namespace mv
