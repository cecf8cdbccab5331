// Where the segments of "abberative" windows look up running sums, over the Vector4 of the
// including source file. Included inside its unnamed namespace, behind RayKernelBody.h. Four
// windows are placed at a time: of four steps whose rays have the same windows, or of the four rays
// of one step.

struct Segments4 {
    Vector4 a;
    Vector4 b;
};

// Doubles from a table's entry 0 to the one before a place, and the shares of it and of the next.
struct TablePlaces {
    std::int32_t offset[4];
    double keep[4];
    double share[4];
};

struct BoxPlaces {
    TablePlaces low;
    TablePlaces high;
    double divisor[4];
};

// Weights that run from one end of a segment to the other. outer is the end of full weight, inner
// as many whole samples from it as the segment has; before and behind are the places around inner
// that the rest of the segment takes.
struct SlopePlaces {
    TablePlaces outer;
    TablePlaces inner;
    TablePlaces before;
    TablePlaces behind;
    double reach[4];  // from outer to inner
    double rest[4];
    double divisor[4];
};

// The whole samples and the rest of slopes of such widths; gives the rest.
inline Vector4 PlaceWeights(SlopePlaces& places, Vector4 width) {
    const Vector4 whole = Floor(width);
    const Vector4 rest = width - whole;
    Store(places.rest, rest);
    Store(places.divisor, whole * (whole + Set(1.0)) * Set(0.5) + rest);
    return rest;
}

// lead: the sample of each line that lies at the tables' entry 0.
template <int channels>
struct SegmentPlacer {
    Vector4 lead;

    void Look(TablePlaces& places, Vector4 x) const {
        const Vector4 floor = Floor(x);
        const Vector4 share = x - floor;
        std::int32_t entry[4];
        StoreTruncated(entry, floor - lead);
        StoreIntegers(places.offset, LoadIntegers(entry) * SetIntegers(channels * 4));
        Store(places.share, share);
        Store(places.keep, Set(1.0) - share);
    }

    void Box(BoxPlaces& places, const Segments4& segments) const {
        const Vector4 one = Set(1.0);
        const Vector4 width = segments.b - segments.a;
        const Vector4 low = Choose(NotGreater(width, one), segments.a - (one - width), segments.a);
        Look(places.low, low);
        Look(places.high, segments.b);
        Store(places.divisor, segments.b - low);
    }

    void Fall(SlopePlaces& places, const Segments4& segments) const {
        const Vector4 one = Set(1.0);
        const Vector4 wanted = segments.b - segments.a;
        const Vector4 low =
            Choose(NotGreaterOrEqual(wanted, one), segments.a - (one - wanted), segments.a);
        const Vector4 inner = segments.b - PlaceWeights(places, segments.b - low);
        Look(places.outer, low);
        Look(places.inner, inner);
        Look(places.behind, inner + one);
        Store(places.reach, inner - low);
    }

    void Rise(SlopePlaces& places, const Segments4& segments) const {
        const Vector4 one = Set(1.0);
        const Vector4 wanted = segments.b - segments.a;
        const Vector4 high =
            Choose(NotGreaterOrEqual(wanted, one), segments.b + (one - wanted), segments.b);
        const Vector4 inner = segments.a + PlaceWeights(places, high - segments.a);
        Look(places.outer, high);
        Look(places.inner, inner);
        Look(places.before, inner - one);
        Look(places.behind, inner + one);
        Store(places.reach, high - inner);
    }
};

// The segments of four windows, in the order in which colours need them.
struct SpectralPlaces {
    SlopePlaces fall[3];
    SlopePlaces rise[3];
    BoxPlaces box[5];
    BoxPlaces whole;
};

// Border x of a window, cut to a line of n samples; a NaN becomes 0.
inline Vector4 CutBorder(Vector4 x, Vector4 n) {
    const Vector4 positive = Maximum(x, Set(0.0));
    return Choose(NotGreater(n, positive), n - Set(1.0), positive);
}

// Windows of such lengths at samples i of lines of n.
template <int colors, int channels, bool isInverted>
inline void PlaceWindows(SpectralPlaces& places, const SegmentPlacer<channels>& placer,
                         Vector4 length, Vector4 i, Vector4 n, double zoomStart) {
    const Vector4 first = i - Set(zoomStart + 0.5) * length;
    const Vector4 borders[] = {CutBorder(first, n),
                               CutBorder(first + Set(0.2) * length, n),
                               CutBorder(first + Set(0.4) * length, n),
                               CutBorder(first + Set(0.6) * length, n),
                               CutBorder(first + Set(0.8) * length, n),
                               CutBorder(first + length, n)};
    const auto segments = [&borders](int from) {
        return Segments4{borders[from], borders[from + 1]};
    };
    placer.Fall(places.fall[0], segments(isInverted ? 1 : 0));
    placer.Rise(places.rise[0], segments(isInverted ? 4 : 3));
    placer.Box(places.box[0], segments(isInverted ? 0 : 4));
    if constexpr (colors > 1) {
        placer.Fall(places.fall[1], segments(isInverted ? 3 : 4));
        placer.Rise(places.rise[1], segments(isInverted ? 0 : 1));
        placer.Box(places.box[1], segments(isInverted ? 1 : 3));
        placer.Box(places.box[2], segments(2));
    }
    if constexpr (colors > 2) {
        if constexpr (isInverted) {
            placer.Rise(places.rise[2], segments(2));
        } else {
            placer.Fall(places.fall[2], segments(2));
        }
        placer.Box(places.box[3], segments(isInverted ? 3 : 1));
        placer.Box(places.box[4], segments(isInverted ? 4 : 0));
    }
    if constexpr (channels > colors) {
        placer.Box(places.whole, Segments4{borders[0], borders[5]});
    }
}
