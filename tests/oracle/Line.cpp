#include "oracle/Line.h"

#include <cmath>

namespace oracle {

double Line::Interpolated(double x, int c) const {
    const double below = std::floor(x);
    const double f = x - below;
    const int k = static_cast<int>(below);
    return (1.0 - f) * At(k, c) + f * At(k + 1, c);
}

Sums::Sums(int count, int channelCount)
    : n(count),
      channels(channelCount),
      s(count, channelCount),
      t1(count, channelCount),
      t2(count, channelCount),
      u1(count, channelCount),
      u2(count, channelCount) {}

void Sums::Build() {
    for (int c = 0; c < channels; ++c) {
        s.At(-2, c) = s.At(0, c);
        s.At(-1, c) = s.At(0, c);
        s.At(n, c) = s.At(n - 1, c);
        s.At(n + 1, c) = s.At(n - 1, c);
        for (int k = 0; k <= n + 1; ++k) {
            t1.At(k, c) = t1.At(k - 1, c) + s.At(k, c);
            t2.At(k, c) = t2.At(k - 1, c) + t1.At(k, c);
        }
        // What the recursion gives backward from two zeros at n + 1.
        u1.At(n + 2, c) = -s.At(n + 1, c);
        u2.At(n + 2, c) = 0.0;
        u1.At(n + 1, c) = 0.0;
        u2.At(n + 1, c) = 0.0;
        for (int k = n; k >= -2; --k) {
            u1.At(k, c) = u1.At(k + 1, c) + s.At(k, c);
            u2.At(k, c) = u2.At(k + 1, c) + u1.At(k, c);
        }
    }
}

}  // namespace oracle
