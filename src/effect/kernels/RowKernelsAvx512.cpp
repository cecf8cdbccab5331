#include "effect/kernels/RowKernels.h"

#include <immintrin.h>

#include <cmath>

namespace mv {
namespace {

// Twice as many of the same registers.
#include "effect/kernels/VectorAvx2.h"

#include "effect/kernels/RowKernelTable.h"

}  // namespace

extern const RowKernels kRowKernelsAvx512 = kTable;

}  // namespace mv
