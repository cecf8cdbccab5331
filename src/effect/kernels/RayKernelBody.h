// The body of the ray kernels over the Vector4 of the including source file. Included inside its
// unnamed namespace behind PixelAccess.h, so that no function here is shared between instruction
// sets.

constexpr double kSnapBound = -1e-6;

// Minor coordinates of the four rays as whole pixels and shares of the second pixel.
struct Places {
    std::int32_t first[kRaysInGroup];
    double share[kRaysInGroup];
    bool isInside[kRaysInGroup] = {};
};

// A coordinate beside the image takes the nearest pixel of the row; nothing is scattered there.
inline void PlaceBeside(Places& places, const double* minor, std::int32_t size) {
    for (int g = 0; g < kRaysInGroup; ++g) {
        const bool inside = minor[g] >= 0.0 && minor[g] < size;
        places.isInside[g] = inside;
        if (inside) {
            places.first[g] = static_cast<std::int32_t>(minor[g]);
            places.share[g] = minor[g] - places.first[g];
        } else {
            places.first[g] = minor[g] < 0.0 ? 0 : size - 1;
            places.share[g] = 0.0;
        }
    }
}

// True when all four lie inside, the usual case; isInside is set only otherwise.
inline bool FindPlaces(Places& places, Vector4 minor, std::int32_t size) {
    const Vector4 snapped = SnapToZero(minor, kSnapBound);
    if (AllInRange(snapped, size)) {
        Store(places.share, snapped - StoreTruncated(places.first, snapped));
        return true;
    }
    double coordinates[kRaysInGroup];
    Store(coordinates, snapped);
    PlaceBeside(places, coordinates, size);
    return false;
}

// With one channel the upper lanes are idle; they hold zeros.
template <int channels>
inline void StoreEntry(double* to, Vector4 v) {
    if constexpr (channels == 1) {
        double lanes[4];
        Store(lanes, v);
        to[0] = lanes[0];
    } else {
        Store(to, v);
    }
}

template <int channels>
inline Vector4 LoadEntry(const double* from) {
    if constexpr (channels == 1) {
        return Set(*from);
    } else {
        return Load(from);
    }
}

template <int channels>
inline Vector4 SamplePixel(const float* first, const float* second, double share) {
    return Widen(LoadFloats<channels>(first)) * Set(1.0 - share) +
           Widen(LoadFloats<channels>(second)) * Set(share);
}

template <int channels>
void Sample(RayGroup& group) {
    constexpr int stride = PrefixStride(channels);
    Vector4 sum[kRaysInGroup];
    Vector4 sample[kRaysInGroup];
    for (int g = 0; g < kRaysInGroup; ++g) {
        sum[g] = LoadEntry<channels>(group.prefix[g] - stride);
        sample[g] = Set(0.0);
    }
    Vector4 minor = Load(group.minor);
    const Vector4 slope = Load(group.slope);
    const float* row = group.image;
    const std::ptrdiff_t ahead = group.prefetch * group.imageMinor;
    for (std::int32_t i = 0; i < group.steps; ++i) {
        Places places;
        FindPlaces(places, minor, group.minorSize);
        for (int g = 0; g < kRaysInGroup; ++g) {
            const float* first = row + places.first[g] * group.imageMinor;
            const float* second =
                places.first[g] == group.minorSize - 1 ? first : first + group.imageMinor;
            sample[g] = SamplePixel<channels>(first, second, places.share[g]);
            sum[g] = sum[g] + sample[g];
            StoreEntry<channels>(group.prefix[g] + static_cast<std::ptrdiff_t>(i) * stride, sum[g]);
        }
        if (ahead != 0) {
            _mm_prefetch(reinterpret_cast<const char*>(
                             row + places.first[kRaysInGroup - 1] * group.imageMinor + ahead),
                         _MM_HINT_T0);
        }
        minor = minor + slope;
        row += group.imageStep;
    }
    Store(group.minor, minor);
    for (int g = 0; g < kRaysInGroup; ++g) {
        StoreEntry<channels>(group.last[g], sample[g]);
    }
}

// The mean over the window of step i.
template <int channels>
inline Vector4 WindowMean(const double* prefix, const WindowPositions& windows, std::int32_t i) {
    constexpr int stride = PrefixStride(channels);
    const double* high = prefix + static_cast<std::ptrdiff_t>(windows.high[i]) * stride;
    const double* low = prefix + static_cast<std::ptrdiff_t>(windows.low[i]) * stride;
    const Vector4 sum = Set(windows.highKeep[i]) * LoadEntry<channels>(high) +
                        Set(windows.highNext[i]) * LoadEntry<channels>(high + stride) -
                        Set(windows.lowNext[i]) * LoadEntry<channels>(low - stride) -
                        Set(windows.lowKeep[i]) * LoadEntry<channels>(low);
    return sum / Set(windows.divisor[i]);
}

// Sums are formed in double and kept in single precision. The weight rides in the lane behind the
// channels: a double sum of two floats, rounded, is the float sum (double precision has more than
// twice their digits).
template <int channels>
inline void AddToPixel(float* pixel, Vector4 value, double part) {
    const double weight = static_cast<double>(static_cast<float>(part));
    if constexpr (channels == 4) {
        const Vector4 sum = Widen(_mm_loadu_ps(pixel)) + Set(part) * value;
        _mm_storeu_ps(pixel, Narrow(sum));
        pixel[4] += static_cast<float>(part);
    } else {
        const Vector4 one = Set(1.0);
        const Vector4 parts = Set(part);
        const Vector4 weights = Set(weight);
        Vector4 lanes;
        Vector4 factors;
        if constexpr (channels == 3) {
            lanes = WithLane3(value, one);
            factors = WithLane3(parts, weights);
        } else {
            lanes = WithUpper(value, one);
            factors = WithUpper(parts, weights);
        }
        const Vector4 sum = Widen(LoadFloats<channels + 1>(pixel)) + factors * lanes;
        StoreFloats<channels + 1>(pixel, Narrow(sum));
    }
}

// One channel: plain arithmetic in two scalars is as good as lanes.
inline void AddToPixel1(float* pixel, double value, double part) {
    pixel[0] = static_cast<float>(static_cast<double>(pixel[0]) + part * value);
    pixel[1] += static_cast<float>(part);
}

inline double WindowMean1(const double* prefix, const WindowPositions& windows, std::int32_t i) {
    constexpr int stride = PrefixStride(1);
    const double* high = prefix + static_cast<std::ptrdiff_t>(windows.high[i]) * stride;
    const double* low = prefix + static_cast<std::ptrdiff_t>(windows.low[i]) * stride;
    const double sum = windows.highKeep[i] * high[0] + windows.highNext[i] * high[stride] -
                       windows.lowNext[i] * low[-stride] - windows.lowKeep[i] * low[0];
    return sum / windows.divisor[i];
}

// Finishes the pixels of a lane that no ray from this place on touches, and gives the lane's sums.
template <int channels>
inline float* PassLane(const LaneSums& target, std::int32_t index, std::int32_t pixel) {
    constexpr std::ptrdiff_t floats = channels + 1;
    float* sums = target.sums + index * (kOpenPixels * floats);
    SumLane& lane = target.lanes[index];
    const std::int32_t wanted = (target.travel > 0 ? pixel : -(pixel + 1)) - 1;
    for (; lane.next < wanted; ++lane.next) {
        const std::int32_t closed = lane.next * target.travel;
        const std::int32_t opened = closed + kOpenPixels * target.travel;
        if (closed < lane.first || closed >= lane.end || opened < lane.first ||
            opened >= lane.end) {
            target.exchange(target.owner, index, closed);
            continue;
        }
        float* slot = sums + (closed & (kOpenPixels - 1)) * floats;
        NormalizePixel<channels>(target.out + index * target.outStep + closed * target.outMinor,
                                 slot);
        if constexpr (channels == 4) {
            slot[4] = 0.0f;
        }
        StoreFloats<(channels < 4 ? channels + 1 : 4)>(slot, _mm_setzero_ps());
    }
    return sums;
}

// The open sums of the two pixels beside a ray.
struct PixelPair {
    float* first;
    float* second;
};

template <int channels>
inline PixelPair PairOf(float* sums, std::int32_t first, std::int32_t size) {
    constexpr std::ptrdiff_t floats = channels + 1;
    const std::int32_t second = first == size - 1 ? first : first + 1;
    return {sums + (first & (kOpenPixels - 1)) * floats,
            sums + (second & (kOpenPixels - 1)) * floats};
}

template <int channels>
void Scatter(RayGroup& group, const WindowPositions* windows) {
    Vector4 minor = Load(group.minor);
    const Vector4 slope = Load(group.slope);
    for (std::int32_t i = 0; i < group.steps; ++i) {
        Places places;
        const bool allInside = FindPlaces(places, minor, group.minorSize);
        float* sums = PassLane<channels>(*group.sums, group.lane + i, places.first[0]);
        for (int g = 0; g < kRaysInGroup; ++g) {
            if (!allInside && !places.isInside[g]) {
                continue;
            }
            const PixelPair pair = PairOf<channels>(sums, places.first[g], group.minorSize);
            const double share = places.share[g];
            if constexpr (channels == 1) {
                const double value = WindowMean1(group.prefix[g], windows[g], i);
                AddToPixel1(pair.first, value, 1.0 - share);
                AddToPixel1(pair.second, value, share);
            } else {
                const Vector4 value = WindowMean<channels>(group.prefix[g], windows[g], i);
                AddToPixel<channels>(pair.first, value, 1.0 - share);
                AddToPixel<channels>(pair.second, value, share);
            }
        }
        minor = minor + slope;
    }
    Store(group.minor, minor);
}
