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

template <int channels>
inline void PlaceInTable(TablePlaces& places, Vector4 x) {
    const Vector4 floor = Floor(x);
    const Vector4 share = x - floor;
    std::int32_t entry[4];
    StoreTruncated(entry, floor);
    StoreIntegers(places.offset, LoadIntegers(entry) * SetIntegers(channels * 4));
    Store(places.share, share);
    Store(places.keep, Set(1.0) - share);
}

template <int channels>
inline void PlaceBox(BoxPlaces& places, const Segments4& segments) {
    const Vector4 one = Set(1.0);
    const Vector4 width = segments.b - segments.a;
    const Vector4 low = Choose(NotGreater(width, one), segments.a - (one - width), segments.a);
    PlaceInTable<channels>(places.low, low);
    PlaceInTable<channels>(places.high, segments.b);
    Store(places.divisor, segments.b - low);
}

// The whole samples and the rest of slopes of such widths.
inline Vector4 PlaceWeights(SlopePlaces& places, Vector4 width) {
    const Vector4 whole = Floor(width);
    const Vector4 rest = width - whole;
    Store(places.rest, rest);
    Store(places.divisor, whole * (whole + Set(1.0)) * Set(0.5) + rest);
    return rest;
}

template <int channels>
inline void PlaceFall(SlopePlaces& places, const Segments4& segments) {
    const Vector4 one = Set(1.0);
    const Vector4 wanted = segments.b - segments.a;
    const Vector4 low =
        Choose(NotGreaterOrEqual(wanted, one), segments.a - (one - wanted), segments.a);
    const Vector4 inner = segments.b - PlaceWeights(places, segments.b - low);
    PlaceInTable<channels>(places.outer, low);
    PlaceInTable<channels>(places.inner, inner);
    PlaceInTable<channels>(places.behind, inner + one);
    Store(places.reach, inner - low);
}

template <int channels>
inline void PlaceRise(SlopePlaces& places, const Segments4& segments) {
    const Vector4 one = Set(1.0);
    const Vector4 wanted = segments.b - segments.a;
    const Vector4 high =
        Choose(NotGreaterOrEqual(wanted, one), segments.b + (one - wanted), segments.b);
    const Vector4 inner = segments.a + PlaceWeights(places, high - segments.a);
    PlaceInTable<channels>(places.outer, high);
    PlaceInTable<channels>(places.inner, inner);
    PlaceInTable<channels>(places.before, inner - one);
    PlaceInTable<channels>(places.behind, inner + one);
    Store(places.reach, high - inner);
}

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

// Windows of such lengths at steps i of lines of n samples.
template <int colors, int channels, bool isInverted>
inline void PlaceWindows(SpectralPlaces& places, Vector4 length, Vector4 i, Vector4 n,
                         double zoomStart) {
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
    PlaceFall<channels>(places.fall[0], segments(isInverted ? 1 : 0));
    PlaceRise<channels>(places.rise[0], segments(isInverted ? 4 : 3));
    PlaceBox<channels>(places.box[0], segments(isInverted ? 0 : 4));
    if constexpr (colors > 1) {
        PlaceFall<channels>(places.fall[1], segments(isInverted ? 3 : 4));
        PlaceRise<channels>(places.rise[1], segments(isInverted ? 0 : 1));
        PlaceBox<channels>(places.box[1], segments(isInverted ? 1 : 3));
        PlaceBox<channels>(places.box[2], segments(2));
    }
    if constexpr (colors > 2) {
        if constexpr (isInverted) {
            PlaceRise<channels>(places.rise[2], segments(2));
        } else {
            PlaceFall<channels>(places.fall[2], segments(2));
        }
        PlaceBox<channels>(places.box[3], segments(isInverted ? 3 : 1));
        PlaceBox<channels>(places.box[4], segments(isInverted ? 4 : 0));
    }
    if constexpr (channels > colors) {
        PlaceBox<channels>(places.whole, Segments4{borders[0], borders[5]});
    }
}
