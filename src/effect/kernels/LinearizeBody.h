// The inverse of the Rec. 709 transfer function over rows. Included inside the unnamed namespace
// of a kernel source file, behind the Vector4.
//
// The power is computed to about 1e-13, far closer than single precision needs. Where that could
// still round to another float than the C library's power does, the library is asked.

constexpr double kDecodeExponent = 2.2222222222222223;
constexpr double kDecodeDoubt = 1e-12;

inline float DecodeWithLibrary(double signal) {
    return static_cast<float>(
        signal > 0.081 ? ::pow(signal * 0.9099181073703367 + 0.09008189262966335, kDecodeExponent)
                       : signal * 0.2222222222222222);
}

// Base-2 logarithm of positive normal numbers: the series of artanh over (m - 1) / (m + 1). Even
// and odd terms by themselves, as in Exp2, since each step of a sum waits for the one before.
inline Vector4 Log2(Vector4 v) {
    Vector4 mantissa = Mantissa(v);
    Vector4 exponent = Exponent(v);
    const Vector4 isLarge = Greater(mantissa, Set(1.4142135623730951));
    mantissa = Choose(isLarge, mantissa * Set(0.5), mantissa);
    exponent = Choose(isLarge, exponent + Set(1.0), exponent);
    const Vector4 s = (mantissa - Set(1.0)) / (mantissa + Set(1.0));
    const Vector4 s2 = s * s;
    const Vector4 s4 = s2 * s2;
    const Vector4 even =
        ((Set(1.0 / 13.0) * s4 + Set(1.0 / 9.0)) * s4 + Set(1.0 / 5.0)) * s4 + Set(1.0);
    const Vector4 odd =
        ((Set(1.0 / 15.0) * s4 + Set(1.0 / 11.0)) * s4 + Set(1.0 / 7.0)) * s4 + Set(1.0 / 3.0);
    const Vector4 sum = even + s2 * odd;
    return exponent + sum * s * Set(2.8853900817779268);
}

// 2 to the power of v, by the exponential series around the nearest whole number.
inline Vector4 Exp2(Vector4 v) {
    const Vector4 whole = RoundToWhole(v);
    const Vector4 g = (v - whole) * Set(0.69314718055994531);
    const Vector4 g2 = g * g;
    Vector4 even = Set(1.0 / 3628800.0) * g2 + Set(1.0 / 40320.0);
    even = even * g2 + Set(1.0 / 720.0);
    even = even * g2 + Set(1.0 / 24.0);
    even = even * g2 + Set(0.5);
    even = even * g2 + Set(1.0);
    Vector4 odd = Set(1.0 / 39916800.0) * g2 + Set(1.0 / 362880.0);
    odd = odd * g2 + Set(1.0 / 5040.0);
    odd = odd * g2 + Set(1.0 / 120.0);
    odd = odd * g2 + Set(1.0 / 6.0);
    odd = odd * g2 + Set(1.0);
    return (even + g * odd) * PowerOfTwo(whole);
}

inline __m128 DecodeFour(Vector4 signal) {
    const Vector4 base = signal * Set(0.9099181073703367) + Set(0.09008189262966335);
    const Vector4 isCurve = Greater(signal, Set(0.081));
    // Beyond it, and for what is no number, the series do not serve.
    const Vector4 isBounded = Greater(Set(16.0), base);
    const Vector4 safeBase = Choose(isBounded, Maximum(base, Set(0.0625)), Set(1.0));
    const Vector4 power = Exp2(Log2(safeBase) * Set(kDecodeExponent));
    const Vector4 low = power * Set(1.0 - kDecodeDoubt);
    const Vector4 high = power * Set(1.0 + kDecodeDoubt);
    const Vector4 line = signal * Set(0.2222222222222222);
    const __m128 narrowLow = Narrow(low);
    const __m128 narrowHigh = Narrow(high);
    const int isCertain = _mm_movemask_ps(_mm_cmpeq_ps(narrowLow, narrowHigh));
    const int curve = MaskBits(isCurve);
    const int doubtful = curve & ~(isCertain & MaskBits(isBounded));
    const __m128 result = Narrow(Choose(isCurve, power, line));
    if (doubtful == 0) {
        return result;
    }
    float lanes[4];
    double signals[4];
    _mm_storeu_ps(lanes, result);
    Store(signals, signal);
    for (int i = 0; i < 4; ++i) {
        if ((doubtful & (1 << i)) != 0) {
            lanes[i] = DecodeWithLibrary(signals[i]);
        }
    }
    return _mm_loadu_ps(lanes);
}

void Linearize(float* values, std::int32_t count, std::int32_t period, std::int32_t skip,
               double inverseWhite, float white) {
    std::int32_t channel = 0;
    std::int32_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const __m128 old = _mm_loadu_ps(values + i);
        const __m128 decoded =
            _mm_mul_ps(DecodeFour(Widen(old) * Set(inverseWhite)), _mm_set1_ps(white));
        float kept[4];
        _mm_storeu_ps(kept, old);
        _mm_storeu_ps(values + i, decoded);
        for (int lane = 0; skip >= 0 && lane < 4; ++lane) {
            if (channel == skip) {
                values[i + lane] = kept[lane];
            }
            channel = channel + 1 == period ? 0 : channel + 1;
        }
    }
    for (; i < count; ++i) {
        if (channel != skip) {
            values[i] = DecodeWithLibrary(values[i] * inverseWhite) * white;
        }
        channel = channel + 1 == period ? 0 : channel + 1;
    }
}
