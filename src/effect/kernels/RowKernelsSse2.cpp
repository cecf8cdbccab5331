#include "effect/kernels/RowKernels.h"

#include <immintrin.h>

#include <cmath>

namespace mv {
namespace {

#include "effect/kernels/VectorSse2.h"

#include "effect/kernels/RowKernelTable.h"

}  // namespace

extern const RowKernels kRowKernelsSse2 = kTable;

}  // namespace mv
