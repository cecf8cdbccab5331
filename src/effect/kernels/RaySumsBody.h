// Where four rays are on a lane, and adding to the open sums there, over the Vector4 of the
// including source file. Included inside its unnamed namespace, behind PixelAccess.h, so that no
// function here is shared between instruction sets.

constexpr double kSnapBound = -1e-6;

// Minor coordinates of the four rays as whole pixels, and the shares of the first and the second
// pixel.
struct Places {
    std::int32_t first[kRaysInGroup];
    bool isInside[kRaysInGroup] = {};
    double keep[kRaysInGroup];
    double share[kRaysInGroup];
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
        places.keep[g] = 1.0 - places.share[g];
    }
}

// True when all four lie inside, the usual case; isInside is set only otherwise.
inline bool FindPlaces(Places& places, Vector4 minor, std::int32_t size) {
    const Vector4 snapped = SnapToZero(minor, kSnapBound);
    if (AllInRange(snapped, size)) {
        const Vector4 share = snapped - StoreTruncated(places.first, snapped);
        Store(places.share, share);
        Store(places.keep, Set(1.0) - share);
        return true;
    }
    double coordinates[kRaysInGroup];
    Store(coordinates, snapped);
    PlaceBeside(places, coordinates, size);
    return false;
}

// Floats from a lane's first pixel to another.
inline std::ptrdiff_t PixelOffset(const RayGroup& group, std::int32_t pixel) {
    return (pixel & group.imageMask) * group.imageMinor;
}

// Finishes the pixels of a lane from its first open place to the wanted one, which no ray from now
// on touches.
template <int channels>
inline void CloseTo(const LaneSums& target, std::int32_t index, std::int32_t wanted) {
    constexpr std::ptrdiff_t floats = channels + 1;
    SumLane& lane = target.lanes[index];
    float* sums = target.sums + index * (kOpenPixels * floats);
    float* out = target.out + index * target.outStep;
    for (; lane.next < wanted; ++lane.next) {
        const std::int32_t closed = lane.next * target.travel;
        if (lane.next < lane.ownFrom || lane.next >= lane.ownEnd) {
            target.exchange(target.owner, index, closed);
            continue;
        }
        float* slot = sums + (closed & (kOpenPixels - 1)) * floats;
        NormalizePixel<channels>(out + (closed & target.outMask) * target.outMinor, slot);
        StoreFloats<(channels < 4 ? channels + 1 : 4)>(slot, _mm_setzero_ps());
        if constexpr (channels == 4) {
            slot[4] = 0.0f;
        }
    }
}

// Gets a lane ready for rays of which the first touches the pixel and the next one: opened, and
// rid of what lies behind. A place of room is left, should rays not follow each other to the last
// bit. Gives the lane's sums.
template <int channels>
inline float* PassLane(const LaneSums& target, std::int32_t index, std::int32_t pixel) {
    const std::int32_t wanted = (target.travel > 0 ? pixel : -(pixel + 1)) - 1;
    if (target.lanes[index].next < wanted) {
        if (target.lanes[index].next == kUnopened) {
            target.open(target.owner, index, pixel);
        }
        CloseTo<channels>(target, index, wanted);
    }
    return target.sums + index * (kOpenPixels * std::ptrdiff_t{channels + 1});
}

// The open sums of a pixel, in floats from the lane's first.
template <int channels>
inline std::ptrdiff_t SlotOf(std::int32_t pixel) {
    return (pixel & (kOpenPixels - 1)) * std::ptrdiff_t{channels + 1};
}

inline std::int32_t SecondOf(std::int32_t first, std::int32_t size) {
    return first == size - 1 ? first : first + 1;
}

// Sums are formed in double and kept in single precision. The weight rides in the lane behind the
// channels: a double sum of two floats, rounded, is the float sum (double precision has more than
// twice their digits).
template <int channels>
inline void AddToPixel(float* pixel, Vector4 value, double part, float weight) {
    if constexpr (channels == 4) {
        const Vector4 sum = Widen(_mm_loadu_ps(pixel)) + Set(part) * value;
        _mm_storeu_ps(pixel, Narrow(sum));
        pixel[4] += weight;
    } else {
        const Vector4 one = Set(1.0);
        const Vector4 parts = Set(part);
        const Vector4 weights = Set(static_cast<double>(weight));
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

// Plain arithmetic in two scalars is as good as lanes.
inline void AddToPixel1(float* pixel, double value, double part, float weight) {
    pixel[0] = static_cast<float>(static_cast<double>(pixel[0]) + part * value);
    pixel[1] += weight;
}

// Adds the values of one step of four rays, each in a vector; with one channel all in the first.
template <int channels>
inline void AddGroup(float* sums, const Places& places, bool allInside, const Vector4* values,
                     std::int32_t size) {
    float keepWeights[kRaysInGroup];
    float shareWeights[kRaysInGroup];
    _mm_storeu_ps(keepWeights, Narrow(Load(places.keep)));
    _mm_storeu_ps(shareWeights, Narrow(Load(places.share)));
    double rays[kRaysInGroup];
    if constexpr (channels == 1) {
        Store(rays, values[0]);
    }
    for (int g = 0; g < kRaysInGroup; ++g) {
        if (!allInside && !places.isInside[g]) {
            continue;
        }
        float* first = sums + SlotOf<channels>(places.first[g]);
        float* second = sums + SlotOf<channels>(SecondOf(places.first[g], size));
        if constexpr (channels == 1) {
            AddToPixel1(first, rays[g], places.keep[g], keepWeights[g]);
            AddToPixel1(second, rays[g], places.share[g], shareWeights[g]);
        } else {
            AddToPixel<channels>(first, values[g], places.keep[g], keepWeights[g]);
            AddToPixel<channels>(second, values[g], places.share[g], shareWeights[g]);
        }
    }
}
