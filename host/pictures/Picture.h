// A picture as files hold it, whatever the file format.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace mv::host {

enum class SampleType { UInt8, UInt16, Float32 };

enum class ResolutionUnit { None, Inch, Centimetre };

struct Resolution {
    double x = 72.0;  // pixels per unit; without a unit only the ratio means something
    double y = 72.0;
    ResolutionUnit unit = ResolutionUnit::Inch;
};

// What says how the numbers are meant as colours, and travels from input to output untouched.
struct ColorDescription {
    std::vector<std::uint8_t> iccProfile;
    std::optional<int> srgbIntent;                              // PNG's sRGB chunk
    std::optional<std::int32_t> fileGamma;                      // PNG's gAMA chunk, times 100000
    std::optional<std::array<std::int32_t, 8>> chromaticities;  // PNG's cHRM chunk
};

// Interleaved samples, rows without padding, in the machine's byte order: colours, then alpha,
// which never is multiplied into them. 16 bit runs from 0 to 65535 here. A plain value.
struct Picture {
    int width = 0;
    int height = 0;
    int colours = 3;  // 1 gray, 3 red, green, blue
    bool alpha = false;
    SampleType type = SampleType::UInt8;
    std::vector<std::uint8_t> samples;
    ColorDescription color;
    std::optional<Resolution> resolution;

    int Channels() const { return colours + (alpha ? 1 : 0); }
    std::size_t SampleBytes() const;
    std::size_t PixelBytes() const { return static_cast<std::size_t>(Channels()) * SampleBytes(); }
    std::size_t RowBytes() const { return static_cast<std::size_t>(width) * PixelBytes(); }
    std::uint8_t* Row(int y) { return samples.data() + static_cast<std::size_t>(y) * RowBytes(); }
    const std::uint8_t* Row(int y) const {
        return samples.data() + static_cast<std::size_t>(y) * RowBytes();
    }
};

// The interface's coordinates have 16 bits, and hosts stop at this side length.
constexpr int kLargestSide = 30000;
constexpr std::int64_t kLargestPixelCount = std::int64_t{1} << 29;

// Turns and flips the picture so that its first row is at the top and its first column at the
// left; `orientation` is 1 to 8 as TIFF numbers them.
void ApplyOrientation(Picture& picture, int orientation);

// Divides colours that were multiplied by alpha.
void Unpremultiply(Picture& picture);

// One byte for each pixel: gray as it is, colours by luminance, alpha ignored.
std::vector<std::uint8_t> ToMask(const Picture& picture);

}  // namespace mv::host
