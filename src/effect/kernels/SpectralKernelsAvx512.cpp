#include "effect/kernels/SpectralKernels.h"

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace mv {
namespace {

// Twice as many of the same registers.
#include "effect/kernels/VectorAvx2.h"

#include "effect/kernels/SpectralKernelTable.h"

}  // namespace

extern const SpectralKernels kSpectralKernelsAvx512 = kTable;

}  // namespace mv
