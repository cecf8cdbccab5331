// Where windows lie, over the Vector4 of the including source file. Included inside its unnamed
// namespace.

// Border of a window, cut to a line of n samples; a NaN becomes 0.
inline Vector4 CutToLine(Vector4 x, double n) {
    const Vector4 positive = Maximum(x, Set(0.0));
    return Choose(NotGreater(Set(n), positive), Set(n - 1.0), positive);
}

// The windows of steps from to from + 3 of a line of n samples; see PlaceWindow.
inline void FillFour(WindowPosition* windows, const WindowRule& rule, std::int32_t from,
                     std::int32_t n) {
    const double size = n;
    const double first = from;
    const double steps[] = {first, first + 1.0, first + 2.0, first + 3.0};
    const Vector4 i = Load(steps);
    const Vector4 one = Set(1.0);
    const Vector4 length =
        Maximum((Set(rule.startDistance) + i - Set(rule.holdout)) * Set(rule.strength), Set(0.0));
    const Vector4 start = i - Set(rule.zoomStart + 0.5) * length;
    const Vector4 b = CutToLine(start + length, size);
    const Vector4 uncut = CutToLine(start, size);
    const Vector4 width = b - uncut;
    const Vector4 a = Choose(NotGreater(width, one), uncut - (one - width), uncut);
    std::int32_t low[4];
    std::int32_t high[4];
    const Vector4 lowShare = StoreTruncated(low, a + one) - a;
    const Vector4 highShare = b - StoreTruncated(high, b);
    double divisors[4];
    Store(divisors, Maximum(length, one));
    Vector4 shares[4] = {one - highShare, highShare, lowShare, one - lowShare};
    Transpose(shares);
    for (int lane = 0; lane < 4; ++lane) {
        WindowPosition& window = windows[lane];
        Store(&window.highKeep, shares[lane]);
        window.divisor = divisors[lane];
        window.high = high[lane];
        window.low = low[lane];
    }
}

inline std::int32_t FillWindows(WindowPosition* windows, const WindowRule& rule, std::int32_t from,
                                std::int32_t end, std::int32_t n) {
    for (; from + 4 <= end; from += 4) {
        FillFour(windows + from, rule, from, n);
    }
    return from;
}
