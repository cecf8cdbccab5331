// The body of the ray kernels over the Vector4 of the including source file. Included inside its
// unnamed namespace behind RaySumsBody.h and WindowKernelBody.h, so that no function here is shared
// between instruction sets.

// Floats from a lane's first pixel to another.
inline std::ptrdiff_t PixelOffset(const RayGroup& group, std::int32_t pixel) {
    return (pixel & group.imageMask) * group.imageMinor;
}

// Those of four pixels. A ring, whose numbers have a mask, is small; a whole picture may be large.
template <bool isRing>
struct PixelOffsets {
    std::ptrdiff_t floats[kRaysInGroup];

    PixelOffsets(const RayGroup& group, const std::int32_t* pixels) {
        for (int g = 0; g < kRaysInGroup; ++g) {
            floats[g] = PixelOffset(group, pixels[g]);
        }
    }
};

template <>
struct PixelOffsets<true> {
    std::int32_t floats[kRaysInGroup];

    PixelOffsets(const RayGroup& group, const std::int32_t* pixels) {
        StoreIntegers(floats, (LoadIntegers(pixels) & SetIntegers(group.imageMask)) *
                                  SetIntegers(static_cast<std::int32_t>(group.imageMinor)));
    }
};

// The floats of a pixel, and behind them whatever there is: a ring has room for it.
template <int channels, bool isRing>
inline __m128 LoadPixel(const float* pixel) {
    constexpr int floats = isRing && channels == 3 ? 4 : channels;
    return LoadFloats<floats>(pixel);
}

template <int channels, bool isRing>
inline Vector4 SamplePixel(const float* first, const float* second, double keep, double share) {
    return Widen(LoadPixel<channels, isRing>(first)) * Set(keep) +
           Widen(LoadPixel<channels, isRing>(second)) * Set(share);
}

// One channel: a ray to a lane.
template <bool isRing>
inline Vector4 SampleFour(const float* row, const Places& places, const PixelOffsets<isRing>& first,
                          const PixelOffsets<isRing>& second) {
    const auto at = [row](const PixelOffsets<isRing>& pixels) {
        return Widen(_mm_setr_ps(row[pixels.floats[0]], row[pixels.floats[1]],
                                 row[pixels.floats[2]], row[pixels.floats[3]]));
    };
    return at(first) * Load(places.keep) + at(second) * Load(places.share);
}

// The samples of one step of four rays, each in a vector; with one channel all in the first.
template <int channels, bool isRing>
inline void SampleStep(Vector4* samples, const float* row, const Places& places,
                       const RayGroup& group) {
    const PixelOffsets<isRing> first(group, places.first);
    const PixelOffsets<isRing> second(group, places.second);
    if constexpr (channels == 1) {
        samples[0] = SampleFour(row, places, first, second);
    } else {
        for (int g = 0; g < kRaysInGroup; ++g) {
            samples[g] = SamplePixel<channels, isRing>(
                row + first.floats[g], row + second.floats[g], places.keep[g], places.share[g]);
        }
    }
}

inline void Prefetch(const float* row, const Places& places, const RayGroup& group) {
    if (group.prefetch != 0) {
        const std::int32_t pixel = places.first[kRaysInGroup - 1] + group.prefetch;
        _mm_prefetch(reinterpret_cast<const char*>(row + PixelOffset(group, pixel)), _MM_HINT_T0);
    }
}

// The lines' running sums while they grow.
template <int channels>
struct GrowingLines {
    static constexpr int kVectors = EntryDoubles(channels) / 4;

    Vector4 sum[kRaysInGroup];
    Vector4 sample[kRaysInGroup];
    double* entry;

    explicit GrowingLines(const RayGroup& group) : entry(group.lines) {
        for (int v = 0; v < kVectors; ++v) {
            sum[v] = Load(entry - EntryDoubles(channels) + v * 4);
            sample[v] = Load(group.last + v * 4);
        }
    }

    void Add() {
        for (int v = 0; v < kVectors; ++v) {
            sum[v] = sum[v] + sample[v];
            Store(entry + v * 4, sum[v]);
        }
        entry += EntryDoubles(channels);
    }

    void StoreLast(double* to) const {
        for (int v = 0; v < kVectors; ++v) {
            Store(to + v * 4, sample[v]);
        }
    }
};

template <int channels, bool isRing>
void SampleSteps(RayGroup& group) {
    GrowingLines<channels> lines(group);
    Vector4 minor = Load(group.minor);
    const Vector4 slope = Load(group.slope);
    const float* row = group.image;
    for (std::int32_t i = 0; i < group.steps; ++i) {
        Places places;
        FindPlaces(places, minor, group.minorSize);
        SampleStep<channels, isRing>(lines.sample, row, places, group);
        lines.Add();
        Prefetch(row, places, group);
        minor = minor + slope;
        row += group.imageStep;
    }
    Store(group.minor, minor);
    lines.StoreLast(group.last);
}

template <int channels>
void Sample(RayGroup& group) {
    if (group.imageMask >= 0) {
        SampleSteps<channels, true>(group);
    } else {
        SampleSteps<channels, false>(group);
    }
}

// The mean over a window of one ray; with one channel and shared windows, of four.
template <int channels>
inline Vector4 WindowMean(const double* line, const WindowPosition& window) {
    constexpr std::ptrdiff_t entry = EntryDoubles(channels);
    const double* high = line + window.high * entry;
    const double* low = line + window.low * entry;
    const Vector4 sum = Set(window.highKeep) * Load(high) +
                        Set(window.highNext) * Load(high + entry) -
                        Set(window.lowNext) * Load(low - entry) - Set(window.lowKeep) * Load(low);
    return sum / Set(window.divisor);
}

inline double WindowMean1(const double* line, const WindowPosition& window) {
    constexpr std::ptrdiff_t entry = EntryDoubles(1);
    const double* high = line + window.high * entry;
    const double* low = line + window.low * entry;
    const double sum = window.highKeep * high[0] + window.highNext * high[entry] -
                       window.lowNext * low[-entry] - window.lowKeep * low[0];
    return sum / window.divisor;
}

// The means of a step of four rays that share its window, each in a vector; with one channel all
// in the first.
template <int channels>
inline void SharedMeans(Vector4* means, const double* line, const WindowPosition& window) {
    for (int v = 0; v < EntryDoubles(channels) / 4; ++v) {
        means[v] = WindowMean<channels>(line + v * 4, window);
    }
}

// The same of four rays whose windows are their own.
template <int channels>
inline void OwnMeans(Vector4* means, const double* const* lines,
                     const WindowPosition* const* windows, std::int32_t i) {
    if constexpr (channels == 1) {
        double rays[kRaysInGroup];
        for (int g = 0; g < kRaysInGroup; ++g) {
            rays[g] = WindowMean1(lines[g], windows[g][i]);
        }
        means[0] = Load(rays);
    } else {
        for (int g = 0; g < kRaysInGroup; ++g) {
            means[g] = WindowMean<channels>(lines[g], windows[g][i]);
        }
    }
}

// Steps that are placed, meant over and added together: short loops one after the other, since the
// additions to one pixel wait for each other.
constexpr std::int32_t kStepsTogether = 8;

struct StepPlaces {
    Places places;
    bool areInside;
};

// The means of so many steps from i on, four vectors for each.
template <int channels, bool areShared>
inline void StepMeans(Vector4 (*means)[kRaysInGroup], const RayGroup& group,
                      const RayWindows& windows, std::int32_t i, std::int32_t steps) {
    if constexpr (areShared) {
        for (std::int32_t s = 0; s < steps; ++s) {
            SharedMeans<channels>(means[s], group.line[0], windows.shared[i + s]);
        }
    } else {
        WindowPosition own[kRaysInGroup][kStepsTogether];
        const WindowPosition* rays[kRaysInGroup];
        for (int g = 0; g < kRaysInGroup; ++g) {
            rays[g] = own[g];
            for (std::int32_t s = 0; s < steps; s += 4) {
                FillFour(own[g] + s, windows.rules[g], windows.first[g] + i + s,
                         windows.samples[g]);
            }
        }
        for (std::int32_t s = 0; s < steps; ++s) {
            OwnMeans<channels>(means[s], group.line, rays, s);
        }
    }
}

// Where a step adds to.
struct StepSlots {
    float* sums;
    std::int32_t first[kRaysInGroup];
    std::int32_t second[kRaysInGroup];
    double keepWeights[kRaysInGroup];
    double shareWeights[kRaysInGroup];
};

// Ray by ray, since neighbouring rays of a step add to the same pixels.
template <int channels>
inline void AddSteps(const RayGroup& group, std::int32_t i, const StepPlaces* at,
                     const Vector4 (*means)[kRaysInGroup], std::int32_t steps) {
    StepSlots slots[kStepsTogether];
    double rays[kStepsTogether][kRaysInGroup];
    for (std::int32_t s = 0; s < steps; ++s) {
        const Places& here = at[s].places;
        StepSlots& to = slots[s];
        to.sums = PassLane<channels>(*group.sums, group.lane + i + s, here.first[0]);
        Store(to.keepWeights, Rounded(Load(here.keep)));
        Store(to.shareWeights, Rounded(Load(here.share)));
        FindSlots<channels>(to.first, here.first);
        FindSlots<channels>(to.second, here.second);
        if constexpr (channels == 1) {
            Store(rays[s], means[s][0]);
        }
    }
    for (int g = 0; g < kRaysInGroup; ++g) {
        for (std::int32_t s = 0; s < steps; ++s) {
            const Places& here = at[s].places;
            const StepSlots& to = slots[s];
            if (!at[s].areInside && !here.isInside[g]) {
                continue;
            }
            float* first = to.sums + to.first[g];
            float* second = to.sums + to.second[g];
            if constexpr (channels == 1) {
                AddToPixel1(first, rays[s][g], here.keep[g], to.keepWeights[g]);
                AddToPixel1(second, rays[s][g], here.share[g], to.shareWeights[g]);
            } else {
                AddToPixel<channels>(first, means[s][g], here.keep[g], to.keepWeights[g]);
                AddToPixel<channels>(second, means[s][g], here.share[g], to.shareWeights[g]);
            }
        }
    }
}

template <int channels, bool areShared>
void ScatterSteps(RayGroup& group, const RayWindows& windows) {
    Vector4 minor = Load(group.minor);
    const Vector4 slope = Load(group.slope);
    StepPlaces at[kStepsTogether];
    Vector4 means[kStepsTogether][kRaysInGroup];
    for (std::int32_t i = 0; i < group.steps; i += kStepsTogether) {
        const std::int32_t left = group.steps - i;
        const std::int32_t together = kStepsTogether < left ? kStepsTogether : left;
        for (std::int32_t s = 0; s < together; ++s) {
            at[s].areInside = FindPlaces(at[s].places, minor, group.minorSize);
            minor = minor + slope;
        }
        StepMeans<channels, areShared>(means, group, windows, i, together);
        AddSteps<channels>(group, i, at, means, together);
    }
    Store(group.minor, minor);
}

template <int channels>
void Scatter(RayGroup& group, const RayWindows& windows) {
    if (windows.shared != nullptr) {
        ScatterSteps<channels, true>(group, windows);
    } else {
        ScatterSteps<channels, false>(group, windows);
    }
}

template <int channels, bool isRing, bool areShared>
void BlurSteps(RayGroup& group, const RayWindows& windows) {
    GrowingLines<channels> lines(group);
    Vector4 minor = Load(group.minor);
    const Vector4 slope = Load(group.slope);
    const float* row = group.image;
    StepPlaces at[kStepsTogether + 1];
    Vector4 means[kStepsTogether][kRaysInGroup];
    at[0].areInside = FindPlaces(at[0].places, minor, group.minorSize);
    for (std::int32_t i = 0; i < group.steps;) {
        const std::int32_t left = group.steps - i;
        const std::int32_t together = kStepsTogether < left ? kStepsTogether : left;
        for (std::int32_t s = 1; s <= together; ++s) {
            minor = minor + slope;
            at[s].areInside = FindPlaces(at[s].places, minor, group.minorSize);
            SampleStep<channels, isRing>(lines.sample, row, at[s].places, group);
            lines.Add();
            Prefetch(row, at[s].places, group);
            row += group.imageStep;
        }
        StepMeans<channels, areShared>(means, group, windows, i, together);
        AddSteps<channels>(group, i, at, means, together);
        at[0] = at[together];
        i += together;
    }
    Store(group.minor, minor);
    lines.StoreLast(group.last);
}

template <int channels, bool isRing>
void BlurWindows(RayGroup& group, const RayWindows& windows) {
    if (windows.shared != nullptr) {
        BlurSteps<channels, isRing, true>(group, windows);
    } else {
        BlurSteps<channels, isRing, false>(group, windows);
    }
}

template <int channels>
void Blur(RayGroup& group, const RayWindows& windows) {
    if (group.imageMask >= 0) {
        BlurWindows<channels, true>(group, windows);
    } else {
        BlurWindows<channels, false>(group, windows);
    }
}
