// The body of the ray kernels over the Vector4 of the including source file. Included inside its
// unnamed namespace behind RaySumsBody.h, so that no function here is shared between instruction
// sets.

template <int channels>
inline Vector4 SamplePixel(const float* first, const float* second, double keep, double share) {
    return Widen(LoadFloats<channels>(first)) * Set(keep) +
           Widen(LoadFloats<channels>(second)) * Set(share);
}

// One channel: a ray to a lane.
inline Vector4 SampleFour(const float* row, const Places& places, const RayGroup& group) {
    const auto at = [&](std::int32_t pixel) { return row[PixelOffset(group, pixel)]; };
    const std::int32_t size = group.minorSize;
    const std::int32_t* first = places.first;
    const __m128 here = _mm_setr_ps(at(first[0]), at(first[1]), at(first[2]), at(first[3]));
    const __m128 next = _mm_setr_ps(at(SecondOf(first[0], size)), at(SecondOf(first[1], size)),
                                    at(SecondOf(first[2], size)), at(SecondOf(first[3], size)));
    return Widen(here) * Load(places.keep) + Widen(next) * Load(places.share);
}

// The samples of one step of four rays, each in a vector; with one channel all in the first.
template <int channels>
inline void SampleStep(Vector4* samples, const float* row, const Places& places,
                       const RayGroup& group) {
    if constexpr (channels == 1) {
        samples[0] = SampleFour(row, places, group);
    } else {
        for (int g = 0; g < kRaysInGroup; ++g) {
            const float* first = row + PixelOffset(group, places.first[g]);
            const float* second =
                row + PixelOffset(group, SecondOf(places.first[g], group.minorSize));
            samples[g] = SamplePixel<channels>(first, second, places.keep[g], places.share[g]);
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

template <int channels>
void Sample(RayGroup& group) {
    GrowingLines<channels> lines(group);
    Vector4 minor = Load(group.minor);
    const Vector4 slope = Load(group.slope);
    const float* row = group.image;
    for (std::int32_t i = 0; i < group.steps; ++i) {
        Places places;
        FindPlaces(places, minor, group.minorSize);
        SampleStep<channels>(lines.sample, row, places, group);
        lines.Add();
        Prefetch(row, places, group);
        minor = minor + slope;
        row += group.imageStep;
    }
    Store(group.minor, minor);
    lines.StoreLast(group.last);
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

template <int channels, bool areShared>
void ScatterSteps(RayGroup& group, const WindowPosition* const* windows) {
    Vector4 minor = Load(group.minor);
    const Vector4 slope = Load(group.slope);
    for (std::int32_t i = 0; i < group.steps; ++i) {
        Places places;
        const bool allInside = FindPlaces(places, minor, group.minorSize);
        Vector4 means[kRaysInGroup];
        if constexpr (areShared) {
            SharedMeans<channels>(means, group.line[0], windows[0][i]);
        } else {
            OwnMeans<channels>(means, group.line, windows, i);
        }
        float* sums = PassLane<channels>(*group.sums, group.lane + i, places.first[0]);
        AddGroup<channels>(sums, places, allInside, means, group.minorSize);
        minor = minor + slope;
    }
    Store(group.minor, minor);
}

template <int channels>
void Scatter(RayGroup& group, const WindowPosition* const* windows, bool areShared) {
    if (areShared) {
        ScatterSteps<channels, true>(group, windows);
    } else {
        ScatterSteps<channels, false>(group, windows);
    }
}

template <int channels>
void Blur(RayGroup& group, const WindowPosition* windows) {
    GrowingLines<channels> lines(group);
    Vector4 minor = Load(group.minor);
    const Vector4 slope = Load(group.slope);
    const float* row = group.image;
    Places places[2];
    bool areInside[2];
    areInside[0] = FindPlaces(places[0], minor, group.minorSize);
    for (std::int32_t i = 0; i < group.steps; ++i) {
        const Places& here = places[i & 1];
        Places& next = places[(i + 1) & 1];
        minor = minor + slope;
        areInside[(i + 1) & 1] = FindPlaces(next, minor, group.minorSize);
        SampleStep<channels>(lines.sample, row, next, group);
        lines.Add();
        Prefetch(row, next, group);
        Vector4 means[kRaysInGroup];
        SharedMeans<channels>(means, group.line[0], windows[i]);
        float* sums = PassLane<channels>(*group.sums, group.lane + i, here.first[0]);
        AddGroup<channels>(sums, here, areInside[i & 1], means, group.minorSize);
        row += group.imageStep;
    }
    Store(group.minor, minor);
    lines.StoreLast(group.last);
}
