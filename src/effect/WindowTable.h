// Where the window of each pixel of a line lies, for the mean over it.
#pragma once

#include <cstdint>

#include "effect/kernels/RayKernels.h"

namespace mv {

// The length of the window of step i; a NaN counts as 0.
inline double WindowLength(const WindowRule& rule, std::int32_t i, double selection) {
    const double wanted = (rule.startDistance + i - rule.holdout) * rule.strength * selection;
    return wanted > 0.0 ? wanted : 0.0;
}

// One window on a line of n samples: from a to b, at least one unit long.
struct Window {
    double a;
    double b;
    bool isCut;  // an end lay beyond the last sample
};

inline Window PlaceWindow(double length, double zoomStart, std::int32_t i, std::int32_t n) {
    const double t = (zoomStart + 0.5) * length;
    double a = i - t;
    double b = i - t + length;
    a = a >= 0.0 ? a : 0.0;
    b = b >= 0.0 ? b : 0.0;
    const bool isCut = a >= n || b >= n;
    if (a >= n) {
        a = n - 1;
    }
    if (b >= n) {
        b = n - 1;
    }
    // A short window becomes one unit wide and ends at b; a may come to lie at -1.
    if (!(b - a > 1.0)) {
        a = a - (1.0 - (b - a));
    }
    return {a, b, isCut};
}

// The first step of a line of n samples from which on its end may cut windows: they move outward
// from step to step, so the cut ones come last.
std::int32_t FirstCutWindow(const WindowRule& rule, std::int32_t n);

// The windows of the steps of a line; the memory is the owner's.
class WindowTable {
public:
    // Doubles that a table for so many steps takes.
    static constexpr std::uint64_t Doubles(std::int32_t steps) {
        static_assert(sizeof(WindowPosition) == 6 * sizeof(double));
        return static_cast<std::uint64_t>(steps) * 6;
    }

    void SetMemory(double* memory) { positions_ = reinterpret_cast<WindowPosition*>(memory); }

    // Step i of a line of n samples.
    void Fill(const WindowRule& rule, std::int32_t i, std::int32_t n);
    // With kernels the fast form, for the same entries.
    void FillAll(const WindowRule& rule, std::int32_t from, std::int32_t to, std::int32_t n,
                 const RayKernels* kernels = nullptr);

    // As of step i.
    const WindowPosition* From(std::int32_t i) const { return positions_ + i; }

private:
    WindowPosition* positions_ = nullptr;
};

}  // namespace mv
