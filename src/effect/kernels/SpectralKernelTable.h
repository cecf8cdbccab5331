// The spectral kernels of one instruction set. Included inside the unnamed namespace of a kernel
// source file, behind the Vector4.

#include "effect/kernels/PixelAccess.h"

#include "effect/kernels/RaySumsBody.h"

#include "effect/kernels/WindowKernelBody.h"

#include "effect/kernels/RayKernelBody.h"

#include "effect/kernels/SpectralPlaceBody.h"

#include "effect/kernels/SpectralKernelBody.h"

constexpr SpectralKernels kTable = {
    {nullptr, &SpectralSample<1>, &SpectralSample<2>, &SpectralSample<3>, &SpectralSample<4>},
    {nullptr, &SpectralSumDown<1>, &SpectralSumDown<2>, &SpectralSumDown<3>, &SpectralSumDown<4>},
    {{nullptr, nullptr},
     {&SpectralScatter<1, 1>, nullptr},
     {&SpectralScatter<2, 2>, &SpectralScatter<1, 2>},
     {&SpectralScatter<3, 3>, &SpectralScatter<2, 3>},
     {nullptr, &SpectralScatter<3, 4>}}};
