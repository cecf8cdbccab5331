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
