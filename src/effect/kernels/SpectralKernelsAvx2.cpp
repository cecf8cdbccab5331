#include "effect/kernels/SpectralKernels.h"

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace mv {
namespace {

#include "effect/kernels/VectorAvx2.h"

#include "effect/kernels/PixelAccess.h"

#include "effect/kernels/RaySumsBody.h"

#include "effect/kernels/WindowKernelBody.h"

#include "effect/kernels/RayKernelBody.h"

#include "effect/kernels/SpectralPlaceBody.h"

#include "effect/kernels/SpectralKernelBody.h"

}  // namespace

extern const SpectralKernels kSpectralKernelsAvx2 = {
    {nullptr, &SpectralSample<1>, &SpectralSample<2>, &SpectralSample<3>, &SpectralSample<4>},
    {nullptr, &SpectralSumDown<1>, &SpectralSumDown<2>, &SpectralSumDown<3>, &SpectralSumDown<4>},
    {{nullptr, nullptr},
     {&SpectralScatter<1, 1>, nullptr},
     {&SpectralScatter<2, 2>, &SpectralScatter<1, 2>},
     {&SpectralScatter<3, 3>, &SpectralScatter<2, 3>},
     {nullptr, &SpectralScatter<3, 4>}}};

}  // namespace mv
