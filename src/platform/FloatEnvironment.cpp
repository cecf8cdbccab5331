#include "platform/FloatEnvironment.h"

#if defined(__x86_64__) || defined(_M_X64)
#include <xmmintrin.h>
#define MV_HAS_VECTOR_STATE 1
#endif

namespace mv {

namespace {

#ifdef MV_HAS_VECTOR_STATE
// All exceptions masked, round to nearest, neither flush-to-zero nor denormals-are-zero.
constexpr std::uint32_t kDefaultVectorState = 0x1f80;
#endif

void SetDefaultEnvironment() noexcept {
    std::fesetenv(FE_DFL_ENV);
#ifdef MV_HAS_VECTOR_STATE
    _mm_setcsr(kDefaultVectorState);
#if defined(__GNUC__)
    // Some C libraries compute pow on the old register stack, whose default precision differs from
    // thread to thread on Windows. 64 bits of mantissa everywhere, or a result would depend on
    // which thread computed it.
    const std::uint16_t controlWord = 0x037f;
    __asm__ volatile("fldcw %0" : : "m"(controlWord));
#endif
#endif
}

}  // namespace

FloatEnvironmentGuard::FloatEnvironmentGuard() noexcept {
#ifdef MV_HAS_VECTOR_STATE
    savedVectorState_ = _mm_getcsr();
#endif
    std::fegetenv(&saved_);
    SetDefaultEnvironment();
}

FloatEnvironmentGuard::~FloatEnvironmentGuard() {
    std::fesetenv(&saved_);
#ifdef MV_HAS_VECTOR_STATE
    // Not every C library keeps the vector unit's state in its environment record.
    _mm_setcsr(savedVectorState_);
#endif
}

}  // namespace mv
