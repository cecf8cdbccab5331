// The body of the spectral kernels over the Vector4 of the including source file. Included inside
// its unnamed namespace, behind SpectralPlaceBody.h.

// One step of four rays that share its window, which is one of the four that were placed.
template <int channels>
struct SharedWindow {
    int step;

    Vector4 At(const double* table, const TablePlaces& places) const {
        const double* entry = table + places.offset[step];
        return Set(places.keep[step]) * Load(entry) +
               Set(places.share[step]) * Load(entry + channels * 4);
    }

    Vector4 Number(const double* numbers) const { return Set(numbers[step]); }
};

// One step of four rays, each with its own window.
template <int channels>
struct OwnWindows {
    Vector4 At(const double* table, const TablePlaces& places) const {
        return Load(places.keep) * Gather(table, places.offset, 1) +
               Load(places.share) * Gather(table + channels * 4, places.offset, 1);
    }

    Vector4 Number(const double* numbers) const { return Load(numbers); }
};

// Means of one channel, over segments that have been placed.
template <class Windows>
struct SpectralMeans {
    const SpectralLines& lines;
    Windows windows;

    Vector4 Box(int c, const BoxPlaces& box) const {
        const double* up1 = lines.up1 + c * 4;
        return (windows.At(up1, box.high) - windows.At(up1, box.low)) / windows.Number(box.divisor);
    }

    Vector4 Fall(int c, const SlopePlaces& slope) const {
        const double* up1 = lines.up1 + c * 4;
        const double* up2 = lines.up2 + c * 4;
        const Vector4 sum = windows.At(up2, slope.inner) - windows.At(up2, slope.outer) -
                            windows.Number(slope.reach) * windows.At(up1, slope.outer) +
                            windows.Number(slope.rest) *
                                (windows.At(up1, slope.behind) - windows.At(up1, slope.inner));
        return sum / windows.Number(slope.divisor);
    }

    Vector4 Rise(int c, const SlopePlaces& slope) const {
        const double* down1 = lines.down1 + c * 4;
        const double* down2 = lines.down2 + c * 4;
        const Vector4 sum =
            windows.At(down2, slope.inner) - windows.At(down2, slope.outer) -
            windows.Number(slope.reach) * windows.At(down1, slope.outer) +
            windows.Number(slope.rest) *
                (windows.At(down1, slope.before) - windows.At(down1, slope.behind)) * Set(0.5);
        return sum / windows.Number(slope.divisor);
    }
};

// The channels of one step of four rays, each channel in a vector.
template <int colors, int channels, bool isInverted, class Windows>
inline void SpectralValues(Vector4* out, const SpectralPlaces& places, const SpectralLines& lines,
                           Windows windows) {
    const SpectralMeans<Windows> mean{lines, windows};
    const Vector4 half = Set(0.5);
    out[0] = ((mean.Fall(0, places.fall[0]) + mean.Rise(0, places.rise[0])) * half +
              mean.Box(0, places.box[0])) *
             half;
    if constexpr (colors > 1) {
        out[1] = ((mean.Fall(1, places.fall[1]) + mean.Rise(1, places.rise[1])) * half +
                  mean.Box(1, places.box[1]) + mean.Box(1, places.box[2])) *
                 Set(0.3333333333333333);
    }
    if constexpr (colors > 2) {
        const Vector4 slope =
            isInverted ? mean.Rise(2, places.rise[2]) : mean.Fall(2, places.fall[2]);
        out[2] =
            (slope * half + mean.Box(2, places.box[3]) + mean.Box(2, places.box[4])) * Set(0.4);
    }
    if constexpr (channels > colors) {
        out[colors] = mean.Box(colors, places.whole);
    }
    for (int c = channels; c < 4 && channels > 1; ++c) {
        out[c] = Set(0.0);
    }
}

// Steps whose windows are placed together, as lanes of a vector.
constexpr std::int32_t kWindowsTogether = 4;

// Whether the four rays' windows are the same at so many steps from i on. Lines of different
// lengths cut their windows differently.
inline bool AreWindowsShared(const SpectralRule& rule, std::int32_t i, std::int32_t steps) {
    if (!rule.isShared || rule.areAsLong) {
        return rule.isShared;
    }
    for (std::int32_t step = i; step < i + steps; ++step) {
        const double wanted = step * rule.strength;
        const double length = wanted > 0.0 ? wanted : 0.0;
        const double first = step - (rule.zoomStart + 0.5) * length;
        if (!(first < rule.fewestSteps && first + length < rule.fewestSteps)) {
            return false;
        }
    }
    return true;
}

// The values of up to kWindowsTogether steps from i on, four vectors for each.
template <int colors, int channels, bool isInverted>
inline void StepValues(Vector4* values, const SpectralLines& lines, const SpectralRule& rule,
                       std::int32_t i, std::int32_t steps) {
    SpectralPlaces places;
    if (AreWindowsShared(rule, i, steps)) {
        const double first = i;
        const double all[] = {first, first + 1.0, first + 2.0, first + 3.0};
        const Vector4 length = Maximum(Load(all) * Set(rule.strength), Set(0.0));
        PlaceWindows<colors, channels, isInverted>(places, {Set(0.0)}, length, Load(all),
                                                   Set(rule.fewestSteps), rule.zoomStart);
        for (std::int32_t s = 0; s < steps; ++s) {
            SpectralValues<colors, channels, isInverted>(values + 4 * s, places, lines,
                                                         SharedWindow<channels>{s});
        }
        return;
    }
    for (std::int32_t s = 0; s < steps; ++s) {
        const Vector4 lead = Load(rule.lead);
        const Vector4 step = lead + Set(i + s);
        const Vector4 length = Maximum(
            (Load(rule.startDistance) + step - Load(rule.holdout)) * Set(rule.strength), Set(0.0));
        PlaceWindows<colors, channels, isInverted>(places, {lead}, length, step, Load(rule.steps),
                                                   rule.zoomStart);
        SpectralValues<colors, channels, isInverted>(values + 4 * s, places, lines,
                                                     OwnWindows<channels>{});
    }
}

template <int colors, int channels, bool isInverted>
void SpectralScatterSteps(RayGroup& group, const SpectralLines& lines, const SpectralRule& rule,
                          std::int32_t from) {
    Vector4 minor = Load(group.minor);
    const Vector4 slope = Load(group.slope);
    for (std::int32_t i = 0; i < group.steps; i += kWindowsTogether) {
        const std::int32_t left = group.steps - i;
        const std::int32_t steps = kWindowsTogether < left ? kWindowsTogether : left;
        Vector4 values[4 * kWindowsTogether];
        StepValues<colors, channels, isInverted>(values, lines, rule, from + i, steps);
        for (std::int32_t s = 0; s < steps; ++s) {
            Places places;
            const bool allInside = FindPlaces(places, minor, group.minorSize);
            float* sums = PassLane<channels>(*group.sums, group.lane + i + s, places.first[0]);
            if constexpr (channels > 1) {
                Transpose(values + 4 * s);
            }
            AddGroup<channels>(sums, places, allInside, values + 4 * s);
            minor = minor + slope;
        }
    }
    Store(group.minor, minor);
}

template <int colors, int channels>
void SpectralScatter(RayGroup& group, const SpectralLines& lines, const SpectralRule& rule,
                     std::int32_t from) {
    if (rule.invertGradient) {
        SpectralScatterSteps<colors, channels, true>(group, lines, rule, from);
    } else {
        SpectralScatterSteps<colors, channels, false>(group, lines, rule, from);
    }
}

template <int channels, bool isRing>
void SpectralSampleSteps(RayGroup& group, const SpectralLines& lines) {
    constexpr std::ptrdiff_t stride = channels * 4;
    Vector4 minor = Load(group.minor);
    const Vector4 slope = Load(group.slope);
    const float* row = group.image;
    Vector4 once[4];
    Vector4 twice[4];
    for (int c = 0; c < channels; ++c) {
        once[c] = Load(lines.up1 - stride + c * 4);
        twice[c] = Load(lines.up2 - stride + c * 4);
    }
    std::ptrdiff_t entry = 0;
    for (std::int32_t i = 0; i < group.steps; ++i, entry += stride) {
        Places places;
        FindPlaces(places, minor, group.minorSize);
        Vector4 rays[kRaysInGroup];
        SampleStep<channels, isRing>(rays, row, places, group);
        if constexpr (channels > 1) {
            Transpose(rays);
        }
        for (int c = 0; c < channels; ++c) {
            once[c] = once[c] + rays[c];
            twice[c] = twice[c] + once[c];
            Store(lines.down1 + entry + c * 4, rays[c]);
            Store(lines.up1 + entry + c * 4, once[c]);
            Store(lines.up2 + entry + c * 4, twice[c]);
        }
        minor = minor + slope;
        row += group.imageStep;
    }
    Store(group.minor, minor);
}

template <int channels>
void SpectralSample(RayGroup& group, const SpectralLines& lines) {
    if (group.imageMask >= 0) {
        SpectralSampleSteps<channels, true>(group, lines);
    } else {
        SpectralSampleSteps<channels, false>(group, lines);
    }
}

template <int channels>
void SpectralSumDown(const SpectralLines& lines, std::int32_t from) {
    constexpr std::ptrdiff_t stride = channels * 4;
    for (int c = 0; c < channels; ++c) {
        Vector4 once = Load(lines.down1 + (from + 1) * stride + c * 4);
        Vector4 twice = Load(lines.down2 + (from + 1) * stride + c * 4);
        for (std::ptrdiff_t k = from; k >= -2; --k) {
            once = once + Load(lines.down1 + k * stride + c * 4);
            twice = twice + once;
            Store(lines.down1 + k * stride + c * 4, once);
            Store(lines.down2 + k * stride + c * 4, twice);
        }
    }
}
