// Pseudo-random render jobs that reach every shape, mode, blend and view.
#pragma once

#include <cstdint>
#include <random>

#include "RenderJob.h"

namespace endtoend {

// The same numbers on every system: the standard's distributions are not.
class Random {
public:
    explicit Random(std::uint32_t seed) : engine_(seed) {}

    int Below(int count) { return static_cast<int>(engine_() % static_cast<std::uint32_t>(count)); }
    double Unit() { return static_cast<double>(engine_()) / 4294967295.0; }
    double Between(double low, double high) { return low + (high - low) * Unit(); }
    bool OneIn(int count) { return Below(count) == 0; }

private:
    std::mt19937 engine_;
};

constexpr int kShapes = 18;

// Job `number` of the fixed sequence. Shape, mode, blend and view follow from the number, so that
// all of them come up; the rest is drawn.
RenderJob RandomJob(int number);
// The same with a picture of up to 230 pixels a side.
RenderJob RandomLargeJob(int number);

// A picture of one shape (0 to 17) filled with one of several kinds of content.
RenderJob RandomPicture(Random& random, int shape, int width, int height);

}  // namespace endtoend
