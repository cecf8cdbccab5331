// A float picture with interleaved channels, rows packed.
#pragma once

#include <cstddef>
#include <vector>

namespace oracle {

struct FloatImage {
    int width = 0;
    int height = 0;
    int channels = 0;
    std::vector<float> values;

    FloatImage() = default;
    FloatImage(int w, int h, int c)
        : width(w),
          height(h),
          channels(c),
          values(static_cast<std::size_t>(w) * static_cast<std::size_t>(h) *
                 static_cast<std::size_t>(c)) {}

    float& At(int x, int y, int c) { return values[Index(x, y, c)]; }
    float At(int x, int y, int c) const { return values[Index(x, y, c)]; }

private:
    std::size_t Index(int x, int y, int c) const {
        return (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                static_cast<std::size_t>(x)) *
                   static_cast<std::size_t>(channels) +
               static_cast<std::size_t>(c);
    }
};

}  // namespace oracle
