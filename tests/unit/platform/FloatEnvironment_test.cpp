#include "platform/FloatEnvironment.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <limits>
#include <thread>

#if defined(__x86_64__) || defined(_M_X64)
#include <xmmintrin.h>
#endif

namespace mv {
namespace {

// Read at run time, so that no computation is folded by the compiler.
volatile double one = 1.0;
volatile double three = 3.0;
volatile float factor = 1.0f;
volatile float smallest = std::numeric_limits<float>::denorm_min();

// Rounding upwards gives the next double above the one that rounding to nearest gives.
constexpr double kThird = 1.0 / 3.0;

double Third() {
    return one / three;
}

TEST(FloatEnvironmentGuard, RoundsToNearestWhateverTheHostHasSet) {
    ASSERT_EQ(std::fesetround(FE_UPWARD), 0);
    const double outside = Third();
    double inside = 0.0;
    {
        const FloatEnvironmentGuard guard;
        inside = Third();
    }
    const double after = Third();
    const int rounding = std::fegetround();
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(inside, kThird);
    EXPECT_GT(outside, kThird);
    EXPECT_EQ(after, outside);
    EXPECT_EQ(rounding, FE_UPWARD);
}

TEST(FloatEnvironmentGuard, StatusFlagsAreThoseFromBefore) {
    std::feclearexcept(FE_ALL_EXCEPT);
    std::feraiseexcept(FE_UNDERFLOW);
    {
        const FloatEnvironmentGuard guard;
        std::feraiseexcept(FE_DIVBYZERO);
    }
    EXPECT_EQ(std::fetestexcept(FE_DIVBYZERO), 0);
    EXPECT_NE(std::fetestexcept(FE_UNDERFLOW), 0);
    std::feclearexcept(FE_ALL_EXCEPT);
}

#if defined(__x86_64__) || defined(_M_X64)
TEST(FloatEnvironmentGuard, KeepsDenormalsWhereTheHostFlushesThem) {
    const unsigned before = _mm_getcsr();
    _mm_setcsr(before | 0x8040u);  // flush-to-zero, denormals-are-zero
    const float outside = smallest * factor;
    float inside = 0.0f;
    {
        const FloatEnvironmentGuard guard;
        inside = smallest * factor;
    }
    const unsigned after = _mm_getcsr();
    _mm_setcsr(before);
    EXPECT_EQ(outside, 0.0f);
    EXPECT_GT(inside, 0.0f);
    EXPECT_EQ(after & 0x8040u, 0x8040u);
}

TEST(FloatEnvironmentGuard, MasksExceptionsThatTheHostHasLetThrough) {
    const unsigned before = _mm_getcsr();
    // Division by zero would end the process from here on.
    _mm_setcsr((before & ~0x3fu) & ~0x200u);
    double inside = 0.0;
    {
        const FloatEnvironmentGuard guard;
        const volatile double zero = 0.0;
        inside = one / zero;
    }
    const unsigned after = _mm_getcsr();
    _mm_setcsr(before);
    EXPECT_EQ(inside, std::numeric_limits<double>::infinity());
    EXPECT_EQ(after & 0x200u, 0u);
}
#endif

#if defined(__GNUC__) && defined(__x86_64__)
std::uint16_t ControlWord() {
    std::uint16_t word = 0;
    __asm__ volatile("fnstcw %0" : "=m"(word));
    return word;
}

void SetControlWord(std::uint16_t word) {
    __asm__ volatile("fldcw %0" : : "m"(word));
}

TEST(FloatEnvironmentGuard, OldRegisterStackHasFullPrecisionOnEveryThread) {
    const std::uint16_t before = ControlWord();
    SetControlWord(0x027f);  // 53 bits of mantissa, as some hosts and threads have it
    std::uint16_t inside = 0;
    {
        const FloatEnvironmentGuard guard;
        inside = ControlWord();
    }
    const std::uint16_t after = ControlWord();
    SetControlWord(before);
    EXPECT_EQ(inside, 0x037f);
    EXPECT_EQ(after, 0x027f);

    std::uint16_t onThread = 0;
    std::thread thread([&onThread] {
        const FloatEnvironmentGuard guard;
        onThread = ControlWord();
    });
    thread.join();
    EXPECT_EQ(onThread, 0x037f);
}
#endif

}  // namespace
}  // namespace mv
