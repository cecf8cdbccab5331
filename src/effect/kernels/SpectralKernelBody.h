// The body of the spectral kernels over the Vector4 of the including source file. Included inside
// its unnamed namespace, behind RayKernelBody.h. Positions on the line are one double where the
// four rays share their windows, and a Vector4 where they do not.

inline double Floor(double x) {
    const auto whole = static_cast<double>(static_cast<std::int32_t>(x));
    return whole > x ? whole - 1.0 : whole;
}

// For positions, which are never negative here.
inline double Truncate(double x) {
    return static_cast<double>(static_cast<std::int32_t>(x));
}
inline Vector4 Truncate(Vector4 x) {
    return Floor(x);
}

inline Vector4 Lanes(double x) {
    return Set(x);
}
inline Vector4 Lanes(Vector4 x) {
    return x;
}

// shifted where the length is too short, else position.
inline double ChooseShort(bool isShort, double shifted, double position) {
    return isShort ? shifted : position;
}
inline Vector4 ChooseShort(Vector4 isShort, Vector4 shifted, Vector4 position) {
    return Choose(isShort, shifted, position);
}
inline bool IsNotAbove(double x, double bound) {
    return !(x > bound);
}
inline Vector4 IsNotAbove(Vector4 x, double bound) {
    return NotGreater(x, Set(bound));
}
inline bool IsBelow(double x, double bound) {
    return !(x >= bound);
}
inline Vector4 IsBelow(Vector4 x, double bound) {
    return NotGreaterOrEqual(x, Set(bound));
}

inline double MakePosition(double, double value) {
    return value;
}
inline Vector4 MakePosition(Vector4, double value) {
    return Set(value);
}

// Border x of a window, cut to a line of n samples; a NaN becomes 0.
inline double CutBorder(double x, double n) {
    const double positive = x >= 0.0 ? x : 0.0;
    return positive >= n ? n - 1.0 : positive;
}
inline Vector4 CutBorder(Vector4 x, Vector4 n) {
    const Vector4 positive = Maximum(x, Set(0.0));
    return Choose(NotGreater(n, positive), n - Set(1.0), positive);
}

// Linear look-up in a table of one channel of four rays.
template <int channels>
struct RayTable {
    const double* entries;

    Vector4 At(double x) const {
        const double floor = Floor(x);
        const double f = x - floor;
        const double* entry = entries + static_cast<std::ptrdiff_t>(floor) * (channels * 4);
        return Set(1.0 - f) * Load(entry) + Set(f) * Load(entry + channels * 4);
    }

    Vector4 At(Vector4 x) const {
        const Vector4 floor = Floor(x);
        const Vector4 f = x - floor;
        std::int32_t index[4];
        StoreTruncated(index, floor);
        const Vector4 low = Gather(entries, index, channels * 4);
        const Vector4 high = Gather(entries + channels * 4, index, channels * 4);
        return (Set(1.0) - f) * low + f * high;
    }
};

template <int channels, class Position>
struct SpectralMeans {
    const SpectralLines& lines;

    RayTable<channels> Of(const double* table, int c) const { return {table + c * 4}; }

    Vector4 Box(int c, Position a, Position b) const {
        const Position one = MakePosition(a, 1.0);
        const Position low = ChooseShort(IsNotAbove(b - a, 1.0), a - (one - (b - a)), a);
        const RayTable<channels> up1 = Of(lines.up1, c);
        return (up1.At(b) - up1.At(low)) / Lanes(b - low);
    }

    Vector4 Fall(int c, Position a, Position b) const {
        const Position one = MakePosition(a, 1.0);
        const Position low = ChooseShort(IsBelow(b - a, 1.0), a - (one - (b - a)), a);
        const Position m = b - low;
        const Position k = Truncate(m);
        const Position f = m - k;
        const Position e = b - f;
        const RayTable<channels> up1 = Of(lines.up1, c);
        const RayTable<channels> up2 = Of(lines.up2, c);
        const Vector4 sum = up2.At(e) - up2.At(low) - Lanes(e - low) * up1.At(low) +
                            Lanes(f) * (up1.At(e + one) - up1.At(e));
        return sum / Lanes(k * (k + one) * MakePosition(a, 0.5) + f);
    }

    Vector4 Rise(int c, Position a, Position b) const {
        const Position one = MakePosition(a, 1.0);
        const Position high = ChooseShort(IsBelow(b - a, 1.0), b + (one - (b - a)), b);
        const Position m = high - a;
        const Position k = Truncate(m);
        const Position f = m - k;
        const Position e = a + f;
        const RayTable<channels> down1 = Of(lines.down1, c);
        const RayTable<channels> down2 = Of(lines.down2, c);
        const Vector4 sum = down2.At(e) - down2.At(high) - Lanes(high - e) * down1.At(high) +
                            Lanes(f) * (down1.At(e - one) - down1.At(e + one)) * Set(0.5);
        return sum / Lanes(k * (k + one) * MakePosition(a, 0.5) + f);
    }
};

// The channels of one step of four rays, each channel in a vector. p: the window's six borders.
template <int colors, int channels, class Position>
inline void SpectralValues(Vector4* out, const Position* p, const SpectralLines& lines,
                           bool invertGradient) {
    const SpectralMeans<channels, Position> mean{lines};
    const Vector4 half = Set(0.5);
    out[0] = invertGradient ? ((mean.Rise(0, p[4], p[5]) + mean.Fall(0, p[1], p[2])) * half +
                               mean.Box(0, p[0], p[1])) *
                                  half
                            : ((mean.Fall(0, p[0], p[1]) + mean.Rise(0, p[3], p[4])) * half +
                               mean.Box(0, p[4], p[5])) *
                                  half;
    if constexpr (colors > 1) {
        const Vector4 third = Set(0.3333333333333333);
        out[1] = invertGradient ? ((mean.Fall(1, p[3], p[4]) + mean.Rise(1, p[0], p[1])) * half +
                                   mean.Box(1, p[1], p[2]) + mean.Box(1, p[2], p[3])) *
                                      third
                                : ((mean.Rise(1, p[1], p[2]) + mean.Fall(1, p[4], p[5])) * half +
                                   mean.Box(1, p[3], p[4]) + mean.Box(1, p[2], p[3])) *
                                      third;
    }
    if constexpr (colors > 2) {
        out[2] = invertGradient ? (mean.Rise(2, p[2], p[3]) * half + mean.Box(2, p[3], p[4]) +
                                   mean.Box(2, p[4], p[5])) *
                                      Set(0.4)
                                : (mean.Fall(2, p[2], p[3]) * half + mean.Box(2, p[1], p[2]) +
                                   mean.Box(2, p[0], p[1])) *
                                      Set(0.4);
    }
    if constexpr (channels > colors) {
        out[colors] = mean.Box(colors, p[0], p[5]);
    }
}

template <class Position, class Count>
inline void MakeBorders(Position* p, Position length, double zoomStart, double i, Count n) {
    const Position w0 = MakePosition(length, i) - MakePosition(length, zoomStart + 0.5) * length;
    p[0] = CutBorder(w0, n);
    p[1] = CutBorder(w0 + MakePosition(length, 0.2) * length, n);
    p[2] = CutBorder(w0 + MakePosition(length, 0.4) * length, n);
    p[3] = CutBorder(w0 + MakePosition(length, 0.6) * length, n);
    p[4] = CutBorder(w0 + MakePosition(length, 0.8) * length, n);
    p[5] = CutBorder(w0 + length, n);
}

template <int colors, int channels>
inline void StepValues(Vector4* out, const SpectralLines& lines, const SpectralRule& rule,
                       double i) {
    if (rule.isShared) {
        const double wanted = i * rule.strength;
        const double length = wanted > 0.0 ? wanted : 0.0;
        const double w0 = i - (rule.zoomStart + 0.5) * length;
        // Lines of different lengths cut their windows differently.
        if (w0 < rule.fewestSteps && w0 + length < rule.fewestSteps) {
            double p[6];
            MakeBorders(p, length, rule.zoomStart, i, rule.fewestSteps);
            SpectralValues<colors, channels>(out, p, lines, rule.invertGradient);
            return;
        }
    }
    const Vector4 wanted =
        (Load(rule.startDistance) + Set(i) - Load(rule.holdout)) * Set(rule.strength);
    const Vector4 length = Maximum(wanted, Set(0.0));
    Vector4 p[6];
    MakeBorders(p, length, rule.zoomStart, i, Load(rule.steps));
    SpectralValues<colors, channels>(out, p, lines, rule.invertGradient);
}

template <int colors, int channels>
void SpectralScatter(RayGroup& group, const SpectralLines& lines, const SpectralRule& rule,
                     std::int32_t from) {
    Vector4 minor = Load(group.minor);
    const Vector4 slope = Load(group.slope);
    for (std::int32_t i = 0; i < group.steps; ++i) {
        Places places;
        const bool allInside = FindPlaces(places, minor, group.minorSize);
        Vector4 values[4] = {Set(0.0), Set(0.0), Set(0.0), Set(0.0)};
        StepValues<colors, channels>(values, lines, rule, from + i);
        float* sums = PassLane<channels>(*group.sums, group.lane + i, places.first[0]);
        if constexpr (channels == 1) {
            AddGroup<1>(sums, places, allInside, values);
        } else {
            Transpose(values);
            AddGroup<channels>(sums, places, allInside, values);
        }
        minor = minor + slope;
    }
    Store(group.minor, minor);
}

template <int channels, bool isRing>
void SpectralSampleSteps(RayGroup& group, double* samples) {
    Vector4 minor = Load(group.minor);
    const Vector4 slope = Load(group.slope);
    const float* row = group.image;
    for (std::int32_t i = 0; i < group.steps; ++i) {
        Places places;
        FindPlaces(places, minor, group.minorSize);
        Vector4 rays[kRaysInGroup];
        SampleStep<channels, isRing>(rays, row, places, group);
        if constexpr (channels > 1) {
            Transpose(rays);
        }
        for (int c = 0; c < channels; ++c) {
            Store(samples, rays[c]);
            samples += 4;
        }
        minor = minor + slope;
        row += group.imageStep;
    }
    Store(group.minor, minor);
}

template <int channels>
void SpectralSample(RayGroup& group, double* samples) {
    if (group.imageMask >= 0) {
        SpectralSampleSteps<channels, true>(group, samples);
    } else {
        SpectralSampleSteps<channels, false>(group, samples);
    }
}

template <int channels>
void SpectralSum(const SpectralLines& lines, std::int32_t steps, std::int32_t fewest) {
    constexpr std::ptrdiff_t stride = channels * 4;
    for (int c = 0; c < channels; ++c) {
        Vector4 once = Set(0.0);
        Vector4 twice = Set(0.0);
        for (std::ptrdiff_t k = 0; k <= steps + 1; ++k) {
            once = once + Load(lines.samples + k * stride + c * 4);
            twice = twice + once;
            Store(lines.up1 + k * stride + c * 4, once);
            Store(lines.up2 + k * stride + c * 4, twice);
        }
        once = Load(lines.down1 + (fewest + 1) * stride + c * 4);
        twice = Load(lines.down2 + (fewest + 1) * stride + c * 4);
        for (std::ptrdiff_t k = fewest; k >= -2; --k) {
            once = once + Load(lines.samples + k * stride + c * 4);
            twice = twice + once;
            Store(lines.down1 + k * stride + c * 4, once);
            Store(lines.down2 + k * stride + c * 4, twice);
        }
    }
}
