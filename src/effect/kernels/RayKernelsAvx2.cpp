#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "effect/kernels/RayKernels.h"

namespace mv {
namespace {

#include "effect/kernels/VectorAvx2.h"

#include "effect/kernels/RayKernelTable.h"

}  // namespace

extern const RayKernels kRayKernelsAvx2 = kTable;

}  // namespace mv
