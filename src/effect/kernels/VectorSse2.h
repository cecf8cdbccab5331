// Four doubles in two SSE2 registers. Included by one source file, in its own namespace.

struct Vector4 {
    __m128d lower;
    __m128d upper;
};

inline Vector4 Set(double value) {
    return {_mm_set1_pd(value), _mm_set1_pd(value)};
}
inline Vector4 Load(const double* from) {
    return {_mm_loadu_pd(from), _mm_loadu_pd(from + 2)};
}
inline void Store(double* to, Vector4 v) {
    _mm_storeu_pd(to, v.lower);
    _mm_storeu_pd(to + 2, v.upper);
}
inline Vector4 operator+(Vector4 a, Vector4 b) {
    return {_mm_add_pd(a.lower, b.lower), _mm_add_pd(a.upper, b.upper)};
}
inline Vector4 operator-(Vector4 a, Vector4 b) {
    return {_mm_sub_pd(a.lower, b.lower), _mm_sub_pd(a.upper, b.upper)};
}
inline Vector4 operator*(Vector4 a, Vector4 b) {
    return {_mm_mul_pd(a.lower, b.lower), _mm_mul_pd(a.upper, b.upper)};
}
inline Vector4 operator/(Vector4 a, Vector4 b) {
    return {_mm_div_pd(a.lower, b.lower), _mm_div_pd(a.upper, b.upper)};
}

// Keeps lanes in which v is above bound or not negative, and makes the others 0.
inline Vector4 SnapToZero(Vector4 v, double bound) {
    const __m128d zero = _mm_setzero_pd();
    const __m128d edge = _mm_set1_pd(bound);
    const auto snap = [&](__m128d x) {
        const __m128d isSnapped = _mm_and_pd(_mm_cmplt_pd(x, zero), _mm_cmpgt_pd(x, edge));
        return _mm_andnot_pd(isSnapped, x);
    };
    return {snap(v.lower), snap(v.upper)};
}

inline bool AllInRange(Vector4 v, double end) {
    const __m128d zero = _mm_setzero_pd();
    const __m128d limit = _mm_set1_pd(end);
    const __m128d a = _mm_and_pd(_mm_cmpge_pd(v.lower, zero), _mm_cmplt_pd(v.lower, limit));
    const __m128d b = _mm_and_pd(_mm_cmpge_pd(v.upper, zero), _mm_cmplt_pd(v.upper, limit));
    return (_mm_movemask_pd(_mm_and_pd(a, b))) == 3;
}

// Truncates to whole numbers, stores them, and gives them back as doubles.
inline Vector4 StoreTruncated(std::int32_t* to, Vector4 v) {
    const __m128i lower = _mm_cvttpd_epi32(v.lower);
    const __m128i upper = _mm_cvttpd_epi32(v.upper);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi64(lower, upper));
    return {_mm_cvtepi32_pd(lower), _mm_cvtepi32_pd(upper)};
}

// The rest of the register 0; never reads past them.
inline __m128 LoadThree(const float* from) {
    return _mm_movelh_ps(_mm_castsi128_ps(_mm_loadu_si64(from)), _mm_load_ss(from + 2));
}

inline Vector4 Widen(__m128 floats) {
    return {_mm_cvtps_pd(floats), _mm_cvtps_pd(_mm_movehl_ps(floats, floats))};
}

inline __m128 Narrow(Vector4 v) {
    return _mm_movelh_ps(_mm_cvtpd_ps(v.lower), _mm_cvtpd_ps(v.upper));
}

// Lane 3 from b, the others from a.
inline Vector4 WithLane3(Vector4 a, Vector4 b) {
    return {a.lower, _mm_shuffle_pd(a.upper, b.upper, 2)};
}

// Lane 3 in all.
inline Vector4 SpreadLane3(Vector4 v) {
    const __m128d lane = _mm_unpackhi_pd(v.upper, v.upper);
    return {lane, lane};
}

// Lanes 2 and 3 from b.
inline Vector4 WithUpper(Vector4 a, Vector4 b) {
    return {a.lower, b.upper};
}

// b where a is not greater (a NaN included), so that Maximum(x, 0) makes a NaN 0.
inline Vector4 Maximum(Vector4 a, Vector4 b) {
    return {_mm_max_pd(a.lower, b.lower), _mm_max_pd(a.upper, b.upper)};
}

inline Vector4 Minimum(Vector4 a, Vector4 b) {
    return {_mm_min_pd(a.lower, b.lower), _mm_min_pd(a.upper, b.upper)};
}

// a where the mask's lanes are set, b elsewhere.
inline Vector4 Choose(Vector4 mask, Vector4 a, Vector4 b) {
    return {_mm_or_pd(_mm_and_pd(mask.lower, a.lower), _mm_andnot_pd(mask.lower, b.lower)),
            _mm_or_pd(_mm_and_pd(mask.upper, a.upper), _mm_andnot_pd(mask.upper, b.upper))};
}

inline Vector4 Greater(Vector4 a, Vector4 b) {
    return {_mm_cmpgt_pd(a.lower, b.lower), _mm_cmpgt_pd(a.upper, b.upper)};
}

inline Vector4 Equal(Vector4 a, Vector4 b) {
    return {_mm_cmpeq_pd(a.lower, b.lower), _mm_cmpeq_pd(a.upper, b.upper)};
}

inline Vector4 And(Vector4 a, Vector4 b) {
    return {_mm_and_pd(a.lower, b.lower), _mm_and_pd(a.upper, b.upper)};
}

// Lanes of a that are not set in mask.
inline Vector4 Without(Vector4 a, Vector4 mask) {
    return {_mm_andnot_pd(mask.lower, a.lower), _mm_andnot_pd(mask.upper, a.upper)};
}

inline int MaskBits(Vector4 mask) {
    return _mm_movemask_pd(mask.lower) | (_mm_movemask_pd(mask.upper) << 2);
}

// The bits of positive normal numbers: mantissa scaled to 1..2, and the exponent as a double.
inline Vector4 Mantissa(Vector4 v) {
    const __m128d keep = _mm_castsi128_pd(_mm_set1_epi64x(0x000FFFFFFFFFFFFF));
    const __m128d one = _mm_set1_pd(1.0);
    return {_mm_or_pd(_mm_and_pd(v.lower, keep), one), _mm_or_pd(_mm_and_pd(v.upper, keep), one)};
}

inline __m128d ExponentOf(__m128d v) {
    // The biased exponent as the low bits of 2^52, which is a whole number to subtract from.
    const __m128i biased = _mm_srli_epi64(_mm_castpd_si128(v), 52);
    const __m128d magic = _mm_set1_pd(4503599627370496.0);
    const __m128d whole = _mm_castsi128_pd(_mm_or_si128(biased, _mm_castpd_si128(magic)));
    return _mm_sub_pd(whole, _mm_set1_pd(4503599627370496.0 + 1023.0));
}

inline Vector4 Exponent(Vector4 v) {
    return {ExponentOf(v.lower), ExponentOf(v.upper)};
}

// 2 to the power of whole numbers, -1000 to 1000.
inline __m128d PowerOfTwoOf(__m128d v) {
    const __m128d magic = _mm_set1_pd(4503599627370496.0 + 1023.0);
    return _mm_castsi128_pd(_mm_slli_epi64(_mm_castpd_si128(_mm_add_pd(v, magic)), 52));
}

inline Vector4 PowerOfTwo(Vector4 v) {
    return {PowerOfTwoOf(v.lower), PowerOfTwoOf(v.upper)};
}

// To the nearest whole number, for magnitudes below 2^51.
inline Vector4 RoundToWhole(Vector4 v) {
    const __m128d magic = _mm_set1_pd(6755399441055744.0);
    return {_mm_sub_pd(_mm_add_pd(v.lower, magic), magic),
            _mm_sub_pd(_mm_add_pd(v.upper, magic), magic)};
}

// True also where one is no number.
inline Vector4 NotGreater(Vector4 a, Vector4 b) {
    return {_mm_cmpngt_pd(a.lower, b.lower), _mm_cmpngt_pd(a.upper, b.upper)};
}

inline Vector4 NotGreaterOrEqual(Vector4 a, Vector4 b) {
    return {_mm_cmpnge_pd(a.lower, b.lower), _mm_cmpnge_pd(a.upper, b.upper)};
}

// For magnitudes below 2^31.
inline __m128d FloorOf(__m128d v) {
    const __m128d whole = _mm_cvtepi32_pd(_mm_cvttpd_epi32(v));
    return _mm_sub_pd(whole, _mm_and_pd(_mm_cmpgt_pd(whole, v), _mm_set1_pd(1.0)));
}

inline Vector4 Floor(Vector4 v) {
    return {FloorOf(v.lower), FloorOf(v.upper)};
}

// Lane g from entries[index[g] * stride + g].
inline Vector4 Gather(const double* entries, const std::int32_t* index, std::ptrdiff_t stride) {
    return {_mm_set_pd(entries[index[1] * stride + 1], entries[index[0] * stride]),
            _mm_set_pd(entries[index[3] * stride + 3], entries[index[2] * stride + 2])};
}

// Lane i of vector j becomes lane j of vector i.
inline void Transpose(Vector4* v) {
    const Vector4 a = v[0];
    const Vector4 b = v[1];
    const Vector4 c = v[2];
    const Vector4 d = v[3];
    v[0] = {_mm_unpacklo_pd(a.lower, b.lower), _mm_unpacklo_pd(c.lower, d.lower)};
    v[1] = {_mm_unpackhi_pd(a.lower, b.lower), _mm_unpackhi_pd(c.lower, d.lower)};
    v[2] = {_mm_unpacklo_pd(a.upper, b.upper), _mm_unpacklo_pd(c.upper, d.upper)};
    v[3] = {_mm_unpackhi_pd(a.upper, b.upper), _mm_unpackhi_pd(c.upper, d.upper)};
}

#include "effect/kernels/Integers4.h"

// The lower 32 bits.
inline Integers4 operator*(Integers4 a, Integers4 b) {
    constexpr int kEven = _MM_SHUFFLE(0, 0, 2, 0);
    const __m128i even = _mm_mul_epu32(a.all, b.all);
    const __m128i odd = _mm_mul_epu32(_mm_srli_si128(a.all, 4), _mm_srli_si128(b.all, 4));
    return {_mm_unpacklo_epi32(_mm_shuffle_epi32(even, kEven), _mm_shuffle_epi32(odd, kEven))};
}
inline Integers4 Least(Integers4 a, Integers4 b) {
    const __m128i isLess = _mm_cmplt_epi32(a.all, b.all);
    return {_mm_or_si128(_mm_and_si128(isLess, a.all), _mm_andnot_si128(isLess, b.all))};
}
inline Vector4 ToDoubles(Integers4 v) {
    return {_mm_cvtepi32_pd(v.all), _mm_cvtepi32_pd(_mm_unpackhi_epi64(v.all, v.all))};
}
inline Integers4 Truncate(Vector4 v) {
    return {_mm_unpacklo_epi64(_mm_cvttpd_epi32(v.lower), _mm_cvttpd_epi32(v.upper))};
}
