// Renders without a host: the filter object itself, a made-up record, and pictures of noise.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "frame/pfFilterRadialBlur.h"

namespace mv::test {

// The filter with as many threads as a test wants, and with the iterations of every job handed
// out backward and on one thread if it wants that: what depends on their order then shows.
class TestFilter : public pfFilterRadialBlur {
public:
    explicit TestFilter(std::int32_t threads = 1, bool isBackward = false);

    std::int32_t GetThreadCount(std::int32_t wanted) override;
    std::int32_t Iterate(std::int32_t iterations, IterateFunction function) override;

    // By the parameter's name; lists take the entry's number, switches 0 or 1.
    void SetValue(const std::string& name, double value);
    void SetOrigin(double x, double y);

private:
    std::int32_t threads_;
    bool isBackward_;
};

// One of the eighteen shapes; planes above the shape's channels are carried along.
struct TestShape {
    int colors;
    bool alpha;
    int depth;
    int planes;
};

std::vector<TestShape> AllShapes();

struct TestPicture {
    TestShape shape;
    int width;
    int height;
    std::vector<std::uint8_t> bytes;
    std::vector<std::uint8_t> mask;  // empty: no selection
};

TestPicture MakeNoise(const TestShape& shape, int width, int height, std::uint32_t seed,
                      bool withMask);

// A record that serves the picture whole, output to out.
hostapi::FilterRecord MakeRecord(TestPicture& picture, std::vector<std::uint8_t>& out);

// The output's bytes, filled with 0xA5 before.
std::vector<std::uint8_t> RenderPicture(TestFilter& filter, TestPicture& picture);

// The same with the output in the place of the input, which stays as it is in picture.
std::vector<std::uint8_t> RenderInPlace(TestFilter& filter, TestPicture& picture);

}  // namespace mv::test
