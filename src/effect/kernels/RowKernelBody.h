// The body of the row kernels over the Vector4 of the including source file. Included inside its
// unnamed namespace, behind PixelAccess.h.

template <int channels>
inline Vector4 ShiftPixel(const float* upper, const float* lower, std::ptrdiff_t left,
                          std::ptrdiff_t right, double share, double lowerShare) {
    const double keep = 1.0 - share;
    const double upperShare = 1.0 - lowerShare;
    return Set(keep * upperShare) * Widen(LoadFloats<channels>(upper + left)) +
           Set(share * upperShare) * Widen(LoadFloats<channels>(upper + right)) +
           Set(keep * lowerShare) * Widen(LoadFloats<channels>(lower + left)) +
           Set(share * lowerShare) * Widen(LoadFloats<channels>(lower + right));
}

template <int channels>
inline void StoreDoubles(double* to, Vector4 v) {
    if constexpr (channels == 4) {
        Store(to, v);
    } else {
        double lanes[4];
        Store(lanes, v);
        for (int c = 0; c < channels; ++c) {
            to[c] = lanes[c];
        }
    }
}

// Three channels leave room for the next pixel, whose store comes after: all but the last may
// be written as four.
template <int channels>
void ShiftToDouble(double* out, const float* upper, const float* lower,
                   const ShiftedColumns& columns, double lowerShare, double gain, std::int32_t from,
                   std::int32_t end) {
    for (std::int32_t x = from; x < end; ++x) {
        const Vector4 value =
            ShiftPixel<channels>(upper, lower, std::ptrdiff_t{columns.left[x]} * channels,
                                 std::ptrdiff_t{columns.right[x]} * channels, columns.share[x],
                                 lowerShare) *
            Set(gain);
        double* to = out + std::ptrdiff_t{x - from} * channels;
        if (channels >= 2 && x + 2 < end) {
            Store(to, value);
        } else {
            StoreDoubles<channels>(to, value);
        }
    }
}

template <int channels>
void ShiftToFloat(float* out, const float* upper, const float* lower, const ShiftedColumns& columns,
                  double lowerShare, std::int32_t from, std::int32_t end) {
    for (std::int32_t x = from; x < end; ++x) {
        const Vector4 value = ShiftPixel<channels>(
            upper, lower, std::ptrdiff_t{columns.left[x]} * channels,
            std::ptrdiff_t{columns.right[x]} * channels, columns.share[x], lowerShare);
        StoreFloats<channels>(out + std::ptrdiff_t{x} * channels, Narrow(value));
    }
}

template <int channels>
void Normalize(float* out, const float* sums, std::int32_t pixels) {
    for (std::int32_t x = 0; x < pixels; ++x) {
        const float* pixel = sums + std::ptrdiff_t{x} * (channels + 1);
        const double weight = static_cast<double>(pixel[channels]);
        const double factor = weight != 0.0 ? 1.0 / weight : 0.0;
        const Vector4 value = Widen(LoadFloats<channels>(pixel)) * Set(factor);
        StoreFloats<channels>(out + std::ptrdiff_t{x} * channels, Narrow(value));
    }
}

void ToneIndices(std::int32_t* out, const double* colors, std::int32_t count, double contrast,
                 double white, double indexScale) {
    const Vector4 half = Set(white * 0.5);
    const Vector4 gain = Set(contrast);
    const Vector4 zero = Set(0.0);
    const Vector4 top = Set(white);
    const Vector4 scale = Set(indexScale);
    std::int32_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const Vector4 c = Load(colors + i);
        const Vector4 contrasted = (c + half) * gain + c;
        // The comparison's order makes a NaN 0.
        const Vector4 bounded = Minimum(Maximum(contrasted, zero), top);
        StoreTruncated(out + i, bounded * scale);
    }
    for (; i < count; ++i) {
        const double c = (colors[i] + white * 0.5) * contrast + colors[i];
        const double positive = c > 0.0 ? c : 0.0;
        out[i] = static_cast<std::int32_t>((positive < white ? positive : white) * indexScale);
    }
}
