// Where four rays are on a lane, and adding to the open sums there, over the Vector4 of the
// including source file. Included inside its unnamed namespace, behind PixelAccess.h, so that no
// function here is shared between instruction sets.

constexpr double kSnapBound = -1e-6;

// Minor coordinates of the four rays as whole pixels, and the shares of the first and the second
// pixel; behind the last pixel the second one is the last, too.
struct Places {
    std::int32_t first[kRaysInGroup];
    std::int32_t second[kRaysInGroup];
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

inline void FindSecond(Places& places, std::int32_t size) {
    StoreIntegers(places.second,
                  Least(LoadIntegers(places.first) + SetIntegers(1), SetIntegers(size - 1)));
}

// True when all four lie inside, the usual case; isInside is set only otherwise.
inline bool FindPlaces(Places& places, Vector4 minor, std::int32_t size) {
    const Vector4 snapped = SnapToZero(minor, kSnapBound);
    if (AllInRange(snapped, size)) {
        const Vector4 share = snapped - StoreTruncated(places.first, snapped);
        Store(places.share, share);
        Store(places.keep, Set(1.0) - share);
        FindSecond(places, size);
        return true;
    }
    double coordinates[kRaysInGroup];
    Store(coordinates, snapped);
    PlaceBeside(places, coordinates, size);
    FindSecond(places, size);
    return false;
}

// Finishes the pixels of a lane from its first open place to the wanted one, which no ray from now
// on touches.
template <int channels>
inline void CloseTo(const LaneSums& target, std::int32_t index, std::int32_t wanted) {
    constexpr std::ptrdiff_t floats = channels + 1;
    SumLane& lane = target.lanes[index];
    float* sums = target.sums + index * (kOpenPixels * floats);
    float* out = target.out + index * target.outStep;
    // Copies, since the stores might reach the originals for all that the compiler knows.
    const std::int32_t travel = target.travel;
    const std::int32_t outMask = target.outMask;
    const std::ptrdiff_t outMinor = target.outMinor;
    const std::int32_t ownFrom = lane.ownFrom;
    const std::int32_t ownEnd = lane.ownEnd;
    for (std::int32_t next = lane.next; next < wanted;) {
        const std::int32_t closed = next * travel;
        if (next < ownFrom || next >= ownEnd) {
            target.exchange(target.owner, index, closed);
        } else {
            float* slot = sums + (closed & (kOpenPixels - 1)) * floats;
            NormalizePixel<channels>(out + (closed & outMask) * outMinor, slot);
            StoreFloats<(channels < 4 ? channels + 1 : 4)>(slot, _mm_setzero_ps());
            if constexpr (channels == 4) {
                slot[4] = 0.0f;
            }
        }
        lane.next = ++next;
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

// The open sums of four pixels, in floats from the lane's first.
template <int channels>
inline void FindSlots(std::int32_t* slots, const std::int32_t* pixels) {
    StoreIntegers(
        slots, (LoadIntegers(pixels) & SetIntegers(kOpenPixels - 1)) * SetIntegers(channels + 1));
}

// Single precision, in doubles.
inline Vector4 Rounded(Vector4 v) {
    return Widen(Narrow(v));
}

// Sums are formed in double and kept in single precision. The weight rides in the lane behind the
// channels: a double sum of two floats, rounded, is the float sum (double precision has more than
// twice their digits).
template <int channels>
inline void AddToPixel(float* pixel, Vector4 value, double part, double weight) {
    if constexpr (channels == 4) {
        const Vector4 sum = Widen(_mm_loadu_ps(pixel)) + Set(part) * value;
        _mm_storeu_ps(pixel, Narrow(sum));
        pixel[4] += static_cast<float>(weight);
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

// Plain arithmetic in two scalars is as good as lanes.
inline void AddToPixel1(float* pixel, double value, double part, double weight) {
    pixel[0] = static_cast<float>(static_cast<double>(pixel[0]) + part * value);
    pixel[1] += static_cast<float>(weight);
}

// Adds the values of one step of four rays, each in a vector; with one channel all in the first.
template <int channels>
inline void AddGroup(float* sums, const Places& places, bool allInside, const Vector4* values) {
    double keepWeights[kRaysInGroup];
    double shareWeights[kRaysInGroup];
    Store(keepWeights, Rounded(Load(places.keep)));
    Store(shareWeights, Rounded(Load(places.share)));
    std::int32_t firstSlots[kRaysInGroup];
    std::int32_t secondSlots[kRaysInGroup];
    FindSlots<channels>(firstSlots, places.first);
    FindSlots<channels>(secondSlots, places.second);
    double rays[kRaysInGroup];
    if constexpr (channels == 1) {
        Store(rays, values[0]);
    }
    for (int g = 0; g < kRaysInGroup; ++g) {
        if (!allInside && !places.isInside[g]) {
            continue;
        }
        float* first = sums + firstSlots[g];
        float* second = sums + secondSlots[g];
        if constexpr (channels == 1) {
            AddToPixel1(first, rays[g], places.keep[g], keepWeights[g]);
            AddToPixel1(second, rays[g], places.share[g], shareWeights[g]);
        } else {
            AddToPixel<channels>(first, values[g], places.keep[g], keepWeights[g]);
            AddToPixel<channels>(second, values[g], places.share[g], shareWeights[g]);
        }
    }
}
