#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "effect/kernels/RayKernels.h"

namespace mv {
namespace {

// Twice as many of the same registers.
#include "effect/kernels/VectorAvx2.h"

#include "effect/kernels/RayKernelTable.h"

}  // namespace

extern const RayKernels kRayKernelsAvx512 = kTable;

}  // namespace mv
