// The value of one place on a ray: the mean over its window, or five weighted means, one for each
// fifth of it.
#pragma once

#include "oracle/Line.h"
#include "oracle/Oracle.h"

namespace oracle {

constexpr int kMaxChannels = 4;

// values has one entry for each channel; index i, window length L.
void PlainWindow(const Sums& sums, double zoomStart, int i, double L, Summation summation,
                 double* values);
void SpectralWindow(const Sums& sums, const Shape& shape, double zoomStart, int i, double L,
                    bool invertGradient, Summation summation, double* values);

}  // namespace oracle
