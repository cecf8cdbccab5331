// The tone curve of float pictures over rows: contrast, a power, and the Rec. 709 transfer
// function. Included inside the unnamed namespace of a kernel source file, behind LinearizeBody.h,
// whose series and whose way with the C library's power it uses.

constexpr double kEncodeExponent = 0.45;
constexpr double kEncodeBound = 0.018;
// A power multiplies the logarithm's error.
constexpr double kMostServedExponent = 16.0;
// Of the result, in which the series' error of kDecodeDoubt may have grown threefold.
constexpr double kToneDoubt = 3.0 * kDecodeDoubt;

// As the composition stores it: what is not above nothing becomes 0, but a -0 stays.
inline float StoredTone(double value) {
    const auto rounded = static_cast<float>(value);
    if (value == 0.0) {
        return rounded;
    }
    return value > 0.0 ? rounded : 0.0f;
}

inline float ToneWithLibrary(double color, const ToneRule& rule) {
    const double v = ::pow(color, rule.exponent);
    if (!rule.isEncoded) {
        return StoredTone(v);
    }
    return StoredTone(v >= kEncodeBound ? 1.099 * ::pow(v, kEncodeExponent) - 0.099 : 4.5 * v);
}

// Four values of the curve, and in which lanes it is not known how the library's would round.
struct FourTones {
    Vector4 values;
    int doubtful;
};

inline FourTones ToneFour(Vector4 color, const ToneRule& rule) {
    Vector4 v = color;
    // Where the series serve: for a power of 1 wherever they are needed.
    Vector4 isServed = Greater(Set(1e18), color);
    Vector4 logarithm;
    if (rule.exponent == 1.0) {
        logarithm = Log2(Choose(isServed, Maximum(color, Set(kEncodeBound)), Set(1.0)));
    } else {
        isServed = And(isServed, Greater(color, Set(1e-300)));
        const Vector4 scaled = Log2(Choose(isServed, color, Set(1.0))) * Set(rule.exponent);
        isServed = And(isServed, And(Greater(Set(32.0), scaled), Greater(scaled, Set(-32.0))));
        logarithm = Choose(isServed, scaled, Set(0.0));
        v = Exp2(logarithm);
    }
    Vector4 result = v;
    if (rule.isEncoded) {
        const Vector4 isLine = Greater(Set(kEncodeBound), v);
        const Vector4 curve = Set(1.099) * Exp2(logarithm * Set(kEncodeExponent)) - Set(0.099);
        result = Choose(isLine, Set(4.5) * v, curve);
        // Too near to the bound to know its side.
        const Vector4 isBelow = Greater(Set(kEncodeBound * (1.0 + kToneDoubt)), v);
        const Vector4 isAbove = Greater(v, Set(kEncodeBound * (1.0 - kToneDoubt)));
        isServed = Without(isServed, And(isBelow, isAbove));
    }
    const __m128 low = Narrow(result * Set(1.0 - kToneDoubt));
    const __m128 high = Narrow(result * Set(1.0 + kToneDoubt));
    const int isCertain = _mm_movemask_ps(_mm_cmpeq_ps(low, high));
    return {result, ~(isCertain & MaskBits(isServed)) & 15};
}

void ToneFloats(float* out, const double* colors, std::int32_t count, const ToneRule& rule) {
    std::int32_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const Vector4 color = Load(colors + i);
        const Vector4 bent = (color + Set(0.5)) * Set(rule.contrast) + color;
        const FourTones tones = ToneFour(bent, rule);
        const Vector4 isNothing = NotGreaterOrEqual(tones.values, Set(0.0));
        _mm_storeu_ps(out + i, Narrow(Choose(isNothing, Set(0.0), tones.values)));
        if (tones.doubtful != 0) {
            double lanes[4];
            Store(lanes, bent);
            for (int lane = 0; lane < 4; ++lane) {
                if ((tones.doubtful & (1 << lane)) != 0) {
                    out[i + lane] = ToneWithLibrary(lanes[lane], rule);
                }
            }
        }
    }
    for (; i < count; ++i) {
        out[i] = ToneWithLibrary((colors[i] + 0.5) * rule.contrast + colors[i], rule);
    }
}
