#include "effect/kernels/RowKernels.h"

#include <immintrin.h>

#include <cmath>

namespace mv {
namespace {

#include "effect/kernels/VectorAvx2.h"

#include "effect/kernels/RowKernelTable.h"

}  // namespace

extern const RowKernels kRowKernelsAvx2 = kTable;

}  // namespace mv
