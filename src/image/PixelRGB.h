// Pixel types: a layout says where each channel lies, PixelRGB adds type, alpha, weight, white.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace mv {

// Layouts carry the channel indices as template arguments; -1 means that a channel is absent.
template <int a>
struct LayoutGrayPixel {
    static constexpr int kColors = 1;
    static constexpr int kAlphaIndex = a;
};

template <int a>
struct Layout2ChannelPixel {
    static constexpr int kColors = 2;
    static constexpr int kAlphaIndex = a;
};

template <int r, int g, int b, int a>
struct LayoutRGBAPixel {
    static_assert(r == 0 && g == 1 && b == 2, "hosts deliver red first, so no swizzle exists");
    static constexpr int kColors = 3;
    static constexpr int kAlphaIndex = a;
};

// One pixel type of the system. Whether it has alpha is the flag's decision, not the layout's:
// host layouts without alpha keep an index that no code reads. white is the largest channel
// value, for colour and alpha alike; it stays the host type's in float working images.
template <class Layout, class T, bool has_alpha, bool has_weight, int white>
struct PixelRGB {
    using LayoutType = Layout;
    using Channel = T;
    static constexpr int kColors = Layout::kColors;
    static constexpr bool kHasAlpha = has_alpha;
    static constexpr bool kHasWeight = has_weight;
    static constexpr int kChannels = kColors + (has_alpha ? 1 : 0);
    static constexpr int kAlphaIndex = has_alpha ? Layout::kAlphaIndex : -1;
    static constexpr int kWeightIndex = has_weight ? kChannels : -1;
    static constexpr int kWhite = white;
    static constexpr int kSize = static_cast<int>(sizeof(T)) * (kChannels + (has_weight ? 1 : 0));
    static_assert(!has_alpha || Layout::kAlphaIndex == kColors, "alpha follows the colours");
};

// The channels of one pixel, by a signed count.
template <class T, int count>
using ChannelArray = T[static_cast<std::size_t>(count)];

// White and its stored reciprocal, in double precision. Formulas that divide by white multiply
// by the reciprocal.
template <int white>
struct WhiteScale;

template <>
struct WhiteScale<255> {
    static constexpr double kWhite = 255.0;
    static constexpr double kInverse = 0.00392156862745098;
    static constexpr double kHalf = 127.5;
    static constexpr double kGammaIndex = 128.49803921568628;
};

template <>
struct WhiteScale<32768> {
    static constexpr double kWhite = 32768.0;
    static constexpr double kInverse = 3.0517578125e-5;
    static constexpr double kHalf = 16384.0;
    static constexpr double kGammaIndex = 0.999969482421875;
};

template <>
struct WhiteScale<1> {
    static constexpr double kWhite = 1.0;
    static constexpr double kInverse = 1.0;
    static constexpr double kHalf = 0.5;
};

// 8-bit mask values become 0 to 1 through this factor in every mode.
constexpr double kMaskScale = 0.00392156862745098;

// Alpha at or below this, in raw channel units, is never divided by.
constexpr double kAlphaGuard = 0.0001;

// The working and accumulator types that belong to a host pixel type.
template <class HostPixel>
struct PixelFamily {
    static constexpr int kColors = HostPixel::kColors;
    static constexpr int kAlpha = HostPixel::kHasAlpha ? kColors : -1;
    using WorkingLayout =
        std::conditional_t<kColors == 1, LayoutGrayPixel<kAlpha>,
                           std::conditional_t<kColors == 2, Layout2ChannelPixel<kAlpha>,
                                              LayoutRGBAPixel<0, 1, 2, kAlpha>>>;
    using Working = PixelRGB<WorkingLayout, float, HostPixel::kHasAlpha, false, HostPixel::kWhite>;
    using Accumulator =
        PixelRGB<WorkingLayout, float, HostPixel::kHasAlpha, true, HostPixel::kWhite>;
};

using MaskPixel = PixelRGB<LayoutGrayPixel<-1>, unsigned char, false, false, 255>;

// Host rows may start at any address, so channels are moved byte by byte as far as C++ goes.
template <class T>
inline T LoadChannel(const unsigned char* pixel, int index) {
    T value;
    std::memcpy(&value, pixel + static_cast<std::size_t>(index) * sizeof(T), sizeof(T));
    return value;
}

template <class T>
inline void StoreChannel(unsigned char* pixel, int index, T value) {
    std::memcpy(pixel + static_cast<std::size_t>(index) * sizeof(T), &value, sizeof(T));
}

// Clamps to 0..maximum; a NaN, being not >= 0, becomes 0.
inline double ClampChannel(double value, double maximum) {
    if (!(value >= 0.0)) {
        return 0.0;
    }
    return value > maximum ? maximum : value;
}

}  // namespace mv
