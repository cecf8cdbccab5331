// Four 32-bit whole numbers in one register, as far as SSE2 serves every instruction set alike.
// Included by the vector headers, in the including source file's own namespace.

struct Integers4 {
    __m128i all;
};

inline Integers4 SetIntegers(std::int32_t value) {
    return {_mm_set1_epi32(value)};
}
inline Integers4 LoadIntegers(const std::int32_t* from) {
    return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))};
}
inline void StoreIntegers(std::int32_t* to, Integers4 v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v.all);
}
inline Integers4 operator+(Integers4 a, Integers4 b) {
    return {_mm_add_epi32(a.all, b.all)};
}
inline Integers4 operator&(Integers4 a, Integers4 b) {
    return {_mm_and_si128(a.all, b.all)};
}
inline Integers4 operator|(Integers4 a, Integers4 b) {
    return {_mm_or_si128(a.all, b.all)};
}
template <int bits>
inline Integers4 ShiftLeft(Integers4 v) {
    return {_mm_slli_epi32(v.all, bits)};
}
template <int bits>
inline Integers4 ShiftRight(Integers4 v) {
    return {_mm_srli_epi32(v.all, bits)};
}

// Four packed pixels of four channels, each channel in four numbers.
template <int sampleBytes>
inline void UnpackPixels(Integers4* channels, const unsigned char* from) {
    const __m128i lower = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    if constexpr (sampleBytes == 1) {
        const Integers4 pixels{lower};
        const Integers4 lowByte = SetIntegers(0xFF);
        channels[0] = pixels & lowByte;
        channels[1] = ShiftRight<8>(pixels) & lowByte;
        channels[2] = ShiftRight<16>(pixels) & lowByte;
        channels[3] = ShiftRight<24>(pixels);
    } else {
        const __m128i upper = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 16));
        const __m128i even = _mm_unpacklo_epi16(lower, upper);
        const __m128i odd = _mm_unpackhi_epi16(lower, upper);
        const __m128i first = _mm_unpacklo_epi16(even, odd);
        const __m128i last = _mm_unpackhi_epi16(even, odd);
        const __m128i zero = _mm_setzero_si128();
        channels[0] = {_mm_unpacklo_epi16(first, zero)};
        channels[1] = {_mm_unpackhi_epi16(first, zero)};
        channels[2] = {_mm_unpacklo_epi16(last, zero)};
        channels[3] = {_mm_unpackhi_epi16(last, zero)};
    }
}

// And back; what a sample has no bits for must be 0.
template <int sampleBytes>
inline void PackPixels(unsigned char* to, const Integers4* channels) {
    auto* lower = reinterpret_cast<__m128i*>(to);
    if constexpr (sampleBytes == 1) {
        const Integers4 pixels = channels[0] | ShiftLeft<8>(channels[1]) |
                                 ShiftLeft<16>(channels[2]) | ShiftLeft<24>(channels[3]);
        _mm_storeu_si128(lower, pixels.all);
    } else {
        const __m128i first = (channels[0] | ShiftLeft<16>(channels[1])).all;
        const __m128i last = (channels[2] | ShiftLeft<16>(channels[3])).all;
        _mm_storeu_si128(lower, _mm_unpacklo_epi32(first, last));
        _mm_storeu_si128(lower + 1, _mm_unpackhi_epi32(first, last));
    }
}
