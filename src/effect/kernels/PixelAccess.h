// Loading and storing the floats of one pixel. Included inside the unnamed namespace of a kernel
// source file, behind the Vector4.

inline __m128 LoadPair(const float* from) {
    return _mm_castsi128_ps(_mm_loadu_si64(from));
}

inline void StorePair(float* to, __m128 v) {
    _mm_storeu_si64(to, _mm_castps_si128(v));
}

// count floats, the rest of the register 0; never reads past them.
template <int count>
inline __m128 LoadFloats(const float* from) {
    if constexpr (count == 1) {
        return _mm_load_ss(from);
    } else if constexpr (count == 2) {
        return LoadPair(from);
    } else if constexpr (count == 3) {
        return LoadThree(from);
    } else {
        return _mm_loadu_ps(from);
    }
}

// Never writes past count floats.
template <int count>
inline void StoreFloats(float* to, __m128 v) {
    if constexpr (count == 1) {
        _mm_store_ss(to, v);
    } else if constexpr (count == 2) {
        StorePair(to, v);
    } else if constexpr (count == 3) {
        StorePair(to, v);
        _mm_store_ss(to + 2, _mm_movehl_ps(v, v));
    } else {
        _mm_storeu_ps(to, v);
    }
}

// The channels of a pixel from its sums and the weight behind them; 0 where there is no weight.
template <int channels>
inline void NormalizePixel(float* out, const float* sums) {
    if constexpr (channels == 3) {
        const Vector4 all = Widen(_mm_loadu_ps(sums));
        const Vector4 weight = SpreadLane3(all);
        const Vector4 factor = Without(Set(1.0) / weight, Equal(weight, Set(0.0)));
        StoreFloats<3>(out, Narrow(all * factor));
    } else {
        const double weight = static_cast<double>(sums[channels]);
        const double factor = weight != 0.0 ? 1.0 / weight : 0.0;
        StoreFloats<channels>(out, Narrow(Widen(LoadFloats<channels>(sums)) * Set(factor)));
    }
}
