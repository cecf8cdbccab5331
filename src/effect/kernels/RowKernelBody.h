// The body of the row kernels over the Vector4 of the including source file. Included inside its
// unnamed namespace, behind PixelAccess.h.

// As everywhere where colours are divided by their alpha.
constexpr double kAlphaGuard = 0.0001;

// Where a run of columns reads, and the weights of its four neighbours.
struct ShiftRun {
    const float* upper;
    const float* lower;
    std::ptrdiff_t right;  // floats from a column to its right neighbour
    double weights[4];
};

inline Vector4 ShiftFour(const ShiftRun& run, std::ptrdiff_t i) {
    return Set(run.weights[0]) * Widen(_mm_loadu_ps(run.upper + i)) +
           Set(run.weights[1]) * Widen(_mm_loadu_ps(run.upper + i + run.right)) +
           Set(run.weights[2]) * Widen(_mm_loadu_ps(run.lower + i)) +
           Set(run.weights[3]) * Widen(_mm_loadu_ps(run.lower + i + run.right));
}

inline double ShiftOne(const ShiftRun& run, std::ptrdiff_t i) {
    return run.weights[0] * static_cast<double>(run.upper[i]) +
           run.weights[1] * static_cast<double>(run.upper[i + run.right]) +
           run.weights[2] * static_cast<double>(run.lower[i]) +
           run.weights[3] * static_cast<double>(run.lower[i + run.right]);
}

// Calls work(run, first column, columns) for each run of from to end. In a run the channels of
// all its pixels are one row of numbers.
template <int channels, class Work>
inline void ForEachRun(const float* upper, const float* lower, const ShiftedColumns& columns,
                       double lowerShare, std::int32_t from, std::int32_t end, Work work) {
    const std::int32_t* runEnd = columns.runEnds;
    for (std::int32_t x = from; x < end;) {
        while (*runEnd <= x) {
            ++runEnd;
        }
        const std::int32_t next = *runEnd < end ? *runEnd : end;
        const double share = columns.share[x];
        const double keep = 1.0 - share;
        const double upperShare = 1.0 - lowerShare;
        const std::ptrdiff_t left = std::ptrdiff_t{columns.left[x]} * channels;
        work(ShiftRun{upper + left,
                      lower + left,
                      std::ptrdiff_t{columns.right[x] - columns.left[x]} * channels,
                      {keep * upperShare, share * upperShare, keep * lowerShare,
                       share * lowerShare}},
             x, next - x);
        x = next;
    }
}

template <int channels>
void ShiftToDouble(double* out, const float* upper, const float* lower,
                   const ShiftedColumns& columns, double lowerShare, double gain, std::int32_t from,
                   std::int32_t end) {
    ForEachRun<channels>(
        upper, lower, columns, lowerShare, from, end,
        [out, gain, from](const ShiftRun& run, std::int32_t x, std::int32_t pixels) {
            double* to = out + std::ptrdiff_t{x - from} * channels;
            const std::ptrdiff_t count = std::ptrdiff_t{pixels} * channels;
            std::ptrdiff_t i = 0;
            for (; i + 4 <= count; i += 4) {
                Store(to + i, ShiftFour(run, i) * Set(gain));
            }
            for (; i < count; ++i) {
                to[i] = ShiftOne(run, i) * gain;
            }
        });
}

template <int channels>
void ShiftToFloat(float* out, const float* upper, const float* lower, const ShiftedColumns& columns,
                  double lowerShare, std::int32_t from, std::int32_t end) {
    ForEachRun<channels>(upper, lower, columns, lowerShare, from, end,
                         [out](const ShiftRun& run, std::int32_t x, std::int32_t pixels) {
                             float* to = out + std::ptrdiff_t{x} * channels;
                             const std::ptrdiff_t count = std::ptrdiff_t{pixels} * channels;
                             std::ptrdiff_t i = 0;
                             for (; i + 4 <= count; i += 4) {
                                 _mm_storeu_ps(to + i, Narrow(ShiftFour(run, i)));
                             }
                             for (; i < count; ++i) {
                                 to[i] = static_cast<float>(ShiftOne(run, i));
                             }
                         });
}

template <int channels>
void Normalize(float* out, const float* sums, std::int32_t pixels) {
    for (std::int32_t x = 0; x < pixels; ++x) {
        NormalizePixel<channels>(out + std::ptrdiff_t{x} * channels,
                                 sums + std::ptrdiff_t{x} * (channels + 1));
    }
}

// Colours divided by their alpha, times white, where there is alpha enough.
inline void DivideByAlpha(Vector4* pixels, double white) {
    const Vector4 rounded = Widen(Narrow(pixels[3]));
    const Vector4 isDivided = Greater(rounded, Set(kAlphaGuard));
    const Vector4 factor = Set(white) / rounded;
    for (int c = 0; c < 3; ++c) {
        pixels[c] = Choose(isDivided, pixels[c] * factor, pixels[c]);
    }
}

// Four weighted pixels, each channel in a vector, made straight and laid over those in backdrop,
// which takes what is stored.
inline void LayOver(Vector4* backdrop, Vector4* s, double white, double inverseWhite) {
    const Vector4 zero = Set(0.0);
    const Vector4 top = Set(white);
    s[3] = Minimum(Maximum(s[3], zero), top);
    const Vector4 most = Maximum(Maximum(s[0], s[1]), s[2]);
    s[3] = Choose(Greater(most, s[3]), Minimum(most, top), s[3]);
    DivideByAlpha(s, white);
    const Vector4 sourceAlpha = s[3] * Set(inverseWhite);
    const Vector4 keep = Set(1.0) - sourceAlpha;
    const Vector4 backdropShare = keep * (backdrop[3] * Set(inverseWhite));
    for (int c = 0; c < 3; ++c) {
        backdrop[c] = backdropShare * backdrop[c] + sourceAlpha * s[c];
    }
    backdrop[3] = keep * backdrop[3] + s[3];
    DivideByAlpha(backdrop, white);
    for (int c = 0; c < 4; ++c) {
        backdrop[c] = Minimum(Maximum(backdrop[c], zero), top);
    }
}

// Four toned pixels from the first one on, each channel in a vector.
inline void LoadToned(Vector4* channels, const TonedPixels& pixels, std::ptrdiff_t first) {
    std::int32_t indices[16];
    for (int i = 0; i < 16; i += 4) {
        StoreIntegers(indices + i, Least(LoadIntegers(pixels.indices + first * 4 + i),
                                         SetIntegers(pixels.lastIndex)));
    }
    const float* table = pixels.toneTable;
    for (int c = 0; c < 3; ++c) {
        channels[c] = Widen(_mm_setr_ps(table[indices[c]], table[indices[4 + c]],
                                        table[indices[8 + c]], table[indices[12 + c]]));
    }
    const double* alpha = pixels.colors + first * 4 + 3;
    const double alphas[] = {alpha[0], alpha[4], alpha[8], alpha[12]};
    channels[3] = Load(alphas);
}

template <int sampleBytes>
void BlendOver(unsigned char* out, const unsigned char* in, const TonedPixels& pixels,
               std::int32_t count) {
    constexpr std::ptrdiff_t step = 4 * 4 * sampleBytes;
    for (std::ptrdiff_t x = 0; x < count; x += 4, in += step, out += step) {
        Vector4 toned[4];
        LoadToned(toned, pixels, x);
        Integers4 samples[4];
        UnpackPixels<sampleBytes>(samples, in);
        Vector4 result[4];
        for (int c = 0; c < 4; ++c) {
            result[c] = ToDoubles(samples[c]);
        }
        LayOver(result, toned, pixels.white, pixels.inverseWhite);
        for (int c = 0; c < 4; ++c) {
            samples[c] = Truncate(result[c]);
        }
        PackPixels<sampleBytes>(out, samples);
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
