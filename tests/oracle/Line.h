// The samples of one ray and the running sums over them.
#pragma once

#include <cstddef>
#include <vector>

namespace oracle {

// Entries -2 to n + 3 of every channel; those that nothing sets are 0.
class Line {
public:
    Line(int n, int channels)
        : channels_(channels),
          values_(static_cast<std::size_t>(n + 6) * static_cast<std::size_t>(channels)) {}

    double& At(int k, int c) { return values_[Index(k, c)]; }
    double At(int k, int c) const { return values_[Index(k, c)]; }

    // Linear between entry floor(x) and the next.
    double Interpolated(double x, int c) const;

private:
    std::size_t Index(int k, int c) const {
        return static_cast<std::size_t>(k + 2) * static_cast<std::size_t>(channels_) +
               static_cast<std::size_t>(c);
    }

    int channels_;
    std::vector<double> values_;
};

// A ray's samples s with the sums upward (T1, T2) and downward (U1, U2). T1 alone serves the
// plain mean.
struct Sums {
    int n;
    int channels;
    Line s;
    Line t1;
    Line t2;
    Line u1;
    Line u2;

    Sums(int count, int channelCount);
    // Extends the samples at both ends and builds the sums; entries 0 to n - 1 of s are set.
    void Build();
};

}  // namespace oracle
