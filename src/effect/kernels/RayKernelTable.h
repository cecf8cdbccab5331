// The ray kernels of one instruction set. Included inside the unnamed namespace of a kernel
// source file, behind the Vector4.

#include "effect/kernels/PixelAccess.h"

#include "effect/kernels/RaySumsBody.h"

#include "effect/kernels/WindowKernelBody.h"

#include "effect/kernels/RayKernelBody.h"

constexpr RayKernels kTable = {{nullptr, &Sample<1>, &Sample<2>, &Sample<3>, &Sample<4>},
                               {nullptr, &Scatter<1>, &Scatter<2>, &Scatter<3>, &Scatter<4>},
                               {nullptr, &Blur<1>, &Blur<2>, &Blur<3>, &Blur<4>},
                               &FillWindows};
