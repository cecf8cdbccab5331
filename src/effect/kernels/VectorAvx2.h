// Four doubles in one AVX register. Included by one source file, in its own namespace.

struct Vector4 {
    __m256d all;
};

inline Vector4 Set(double value) {
    return {_mm256_set1_pd(value)};
}
inline Vector4 Load(const double* from) {
    return {_mm256_loadu_pd(from)};
}
inline void Store(double* to, Vector4 v) {
    _mm256_storeu_pd(to, v.all);
}
inline Vector4 operator+(Vector4 a, Vector4 b) {
    return {_mm256_add_pd(a.all, b.all)};
}
inline Vector4 operator-(Vector4 a, Vector4 b) {
    return {_mm256_sub_pd(a.all, b.all)};
}
inline Vector4 operator*(Vector4 a, Vector4 b) {
    return {_mm256_mul_pd(a.all, b.all)};
}
inline Vector4 operator/(Vector4 a, Vector4 b) {
    return {_mm256_div_pd(a.all, b.all)};
}

// Keeps lanes in which v is above bound or not negative, and makes the others 0.
inline Vector4 SnapToZero(Vector4 v, double bound) {
    const __m256d zero = _mm256_setzero_pd();
    const __m256d isSnapped =
        _mm256_and_pd(_mm256_cmp_pd(v.all, zero, _CMP_LT_OQ),
                      _mm256_cmp_pd(v.all, _mm256_set1_pd(bound), _CMP_GT_OQ));
    return {_mm256_andnot_pd(isSnapped, v.all)};
}

inline bool AllInRange(Vector4 v, double end) {
    const __m256d inside = _mm256_and_pd(_mm256_cmp_pd(v.all, _mm256_setzero_pd(), _CMP_GE_OQ),
                                         _mm256_cmp_pd(v.all, _mm256_set1_pd(end), _CMP_LT_OQ));
    return _mm256_movemask_pd(inside) == 15;
}

// Truncates to whole numbers, stores them, and gives them back as doubles.
inline Vector4 StoreTruncated(std::int32_t* to, Vector4 v) {
    const __m128i whole = _mm256_cvttpd_epi32(v.all);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), whole);
    return {_mm256_cvtepi32_pd(whole)};
}

// The rest of the register 0; never reads past them.
inline __m128 LoadThree(const float* from) {
    return _mm_movelh_ps(_mm_castsi128_ps(_mm_loadu_si64(from)), _mm_load_ss(from + 2));
}

inline Vector4 Widen(__m128 floats) {
    return {_mm256_cvtps_pd(floats)};
}
inline __m128 Narrow(Vector4 v) {
    return _mm256_cvtpd_ps(v.all);
}

// Lane 3 from b, the others from a.
inline Vector4 WithLane3(Vector4 a, Vector4 b) {
    return {_mm256_blend_pd(a.all, b.all, 8)};
}

// Lane 3 in all.
inline Vector4 SpreadLane3(Vector4 v) {
    return {_mm256_permute4x64_pd(v.all, 0xFF)};
}

// Lanes 2 and 3 from b.
inline Vector4 WithUpper(Vector4 a, Vector4 b) {
    return {_mm256_blend_pd(a.all, b.all, 12)};
}

// b where a is not greater (a NaN included), so that Maximum(x, 0) makes a NaN 0.
inline Vector4 Maximum(Vector4 a, Vector4 b) {
    return {_mm256_max_pd(a.all, b.all)};
}
inline Vector4 Minimum(Vector4 a, Vector4 b) {
    return {_mm256_min_pd(a.all, b.all)};
}

// a where the mask's lanes are set, b elsewhere.
inline Vector4 Choose(Vector4 mask, Vector4 a, Vector4 b) {
    return {_mm256_blendv_pd(b.all, a.all, mask.all)};
}

inline Vector4 Greater(Vector4 a, Vector4 b) {
    return {_mm256_cmp_pd(a.all, b.all, _CMP_GT_OQ)};
}

inline Vector4 Equal(Vector4 a, Vector4 b) {
    return {_mm256_cmp_pd(a.all, b.all, _CMP_EQ_OQ)};
}

inline Vector4 And(Vector4 a, Vector4 b) {
    return {_mm256_and_pd(a.all, b.all)};
}

// Lanes of a that are not set in mask.
inline Vector4 Without(Vector4 a, Vector4 mask) {
    return {_mm256_andnot_pd(mask.all, a.all)};
}

inline int MaskBits(Vector4 mask) {
    return _mm256_movemask_pd(mask.all);
}

// The bits of positive normal numbers: mantissa scaled to 1..2, and the exponent as a double.
inline Vector4 Mantissa(Vector4 v) {
    const __m256d keep = _mm256_castsi256_pd(_mm256_set1_epi64x(0x000FFFFFFFFFFFFF));
    return {_mm256_or_pd(_mm256_and_pd(v.all, keep), _mm256_set1_pd(1.0))};
}

inline Vector4 Exponent(Vector4 v) {
    // The biased exponent as the low bits of 2^52, which is a whole number to subtract from.
    const __m256i biased = _mm256_srli_epi64(_mm256_castpd_si256(v.all), 52);
    const __m256d magic = _mm256_set1_pd(4503599627370496.0);
    const __m256d whole = _mm256_castsi256_pd(_mm256_or_si256(biased, _mm256_castpd_si256(magic)));
    return {_mm256_sub_pd(whole, _mm256_set1_pd(4503599627370496.0 + 1023.0))};
}

// 2 to the power of whole numbers, -1000 to 1000.
inline Vector4 PowerOfTwo(Vector4 v) {
    const __m256d magic = _mm256_set1_pd(4503599627370496.0 + 1023.0);
    const __m256i bits = _mm256_castpd_si256(_mm256_add_pd(v.all, magic));
    return {_mm256_castsi256_pd(_mm256_slli_epi64(bits, 52))};
}

// To the nearest whole number, for magnitudes below 2^51.
inline Vector4 RoundToWhole(Vector4 v) {
    const __m256d magic = _mm256_set1_pd(6755399441055744.0);
    return {_mm256_sub_pd(_mm256_add_pd(v.all, magic), magic)};
}

// True also where one is no number.
inline Vector4 NotGreater(Vector4 a, Vector4 b) {
    return {_mm256_cmp_pd(a.all, b.all, _CMP_NGT_UQ)};
}

inline Vector4 NotGreaterOrEqual(Vector4 a, Vector4 b) {
    return {_mm256_cmp_pd(a.all, b.all, _CMP_NGE_UQ)};
}

inline Vector4 Floor(Vector4 v) {
    return {_mm256_floor_pd(v.all)};
}

// Lane g from entries[index[g] * stride + g].
inline Vector4 Gather(const double* entries, const std::int32_t* index, std::ptrdiff_t stride) {
    return {_mm256_set_pd(entries[index[3] * stride + 3], entries[index[2] * stride + 2],
                          entries[index[1] * stride + 1], entries[index[0] * stride])};
}

// Lane i of vector j becomes lane j of vector i.
inline void Transpose(Vector4* v) {
    const __m256d a = _mm256_unpacklo_pd(v[0].all, v[1].all);
    const __m256d b = _mm256_unpackhi_pd(v[0].all, v[1].all);
    const __m256d c = _mm256_unpacklo_pd(v[2].all, v[3].all);
    const __m256d d = _mm256_unpackhi_pd(v[2].all, v[3].all);
    v[0] = {_mm256_permute2f128_pd(a, c, 0x20)};
    v[1] = {_mm256_permute2f128_pd(b, d, 0x20)};
    v[2] = {_mm256_permute2f128_pd(a, c, 0x31)};
    v[3] = {_mm256_permute2f128_pd(b, d, 0x31)};
}

#include "effect/kernels/Integers4.h"

// The lower 32 bits.
inline Integers4 operator*(Integers4 a, Integers4 b) {
    return {_mm_mullo_epi32(a.all, b.all)};
}
inline Integers4 Least(Integers4 a, Integers4 b) {
    return {_mm_min_epi32(a.all, b.all)};
}
inline Vector4 ToDoubles(Integers4 v) {
    return {_mm256_cvtepi32_pd(v.all)};
}
inline Integers4 Truncate(Vector4 v) {
    return {_mm256_cvttpd_epi32(v.all)};
}
