// Scalars and small structures of the published filter interface on 64-bit Windows (LLP64).
// Vertical comes before horizontal everywhere; bottom and right are exclusive.
#pragma once

#include <cstddef>
#include <cstdint>

// Every callback uses the Microsoft x64 convention on Windows, which is the compiler's default
// there; on other systems the platform's own convention serves, as host and module share it.
namespace hostapi {

using OSErr = std::int16_t;
using Boolean = std::uint8_t;
using Fixed = std::int32_t;
using OSType = std::uint32_t;
using Ptr = char*;
using Handle = char**;
using BufferID = void*;

// The first character of a four-character code is the most significant byte.
constexpr OSType FourCharacterCode(const char (&code)[5]) {
    return (static_cast<OSType>(static_cast<unsigned char>(code[0])) << 24) |
           (static_cast<OSType>(static_cast<unsigned char>(code[1])) << 16) |
           (static_cast<OSType>(static_cast<unsigned char>(code[2])) << 8) |
           static_cast<OSType>(static_cast<unsigned char>(code[3]));
}

struct Point {
    std::int16_t v;
    std::int16_t h;
};

struct Rect {
    std::int16_t top;
    std::int16_t left;
    std::int16_t bottom;
    std::int16_t right;
};

struct VPoint {
    std::int32_t v;
    std::int32_t h;
};

struct VRect {
    std::int32_t top;
    std::int32_t left;
    std::int32_t bottom;
    std::int32_t right;
};

struct RGBColor {
    std::uint16_t red;
    std::uint16_t green;
    std::uint16_t blue;
};

using FilterColor = std::uint8_t[4];
using Str255 = std::uint8_t[256];

struct PlugInMonitor {
    Fixed gamma;
    Fixed redX;
    Fixed redY;
    Fixed greenX;
    Fixed greenY;
    Fixed blueX;
    Fixed blueY;
    Fixed whiteX;
    Fixed whiteY;
    Fixed ambient;
};

// hwnd is the host's window, an HWND on Windows; it may be null.
struct PlatformData {
    void* hwnd;
};

static_assert(sizeof(void*) == 8, "the interface is declared for 64-bit systems only");
static_assert(sizeof(Point) == 4 && offsetof(Point, h) == 2);
static_assert(sizeof(Rect) == 8 && offsetof(Rect, left) == 2 && offsetof(Rect, right) == 6);
static_assert(sizeof(VPoint) == 8 && sizeof(VRect) == 16);
static_assert(sizeof(RGBColor) == 6);
static_assert(sizeof(PlugInMonitor) == 40);
static_assert(sizeof(PlatformData) == 8);

}  // namespace hostapi
