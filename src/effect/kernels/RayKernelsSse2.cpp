#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "effect/kernels/RayKernels.h"

namespace mv {
namespace {

#include "effect/kernels/VectorSse2.h"

#include "effect/kernels/RayKernelTable.h"

}  // namespace

extern const RayKernels kRayKernelsSse2 = kTable;

}  // namespace mv
