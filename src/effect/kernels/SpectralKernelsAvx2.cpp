#include "effect/kernels/SpectralKernels.h"

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace mv {
namespace {

#include "effect/kernels/VectorAvx2.h"

#include "effect/kernels/SpectralKernelTable.h"

}  // namespace

extern const SpectralKernels kSpectralKernelsAvx2 = kTable;

}  // namespace mv
