// The final composition of rows: the blurred picture read back, coloured, blended and stored.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "effect/BlendPixels.h"
#include "effect/ColorStage.h"
#include "effect/RenderSettings.h"
#include "effect/ShiftColumns.h"
#include "image/PixelArray.h"

namespace mv {

// Composes rows of one render; immutable while rows run, so that any thread may run any row.
template <class C_Image>
class Composer {
    using HostPixel = typename C_Image::Pixel_t;
    using Channel = typename HostPixel::Channel;
    using Working = WorkingImage<HostPixel>;
    using Scale = WhiteScale<HostPixel::kWhite>;
    static constexpr int kColors = HostPixel::kColors;
    static constexpr int kChannels = HostPixel::kChannels;
    static constexpr bool kIsInteger = !std::is_same_v<Channel, float>;

    // Pixels that the fast form takes at a time, so that what it keeps between its steps stays
    // near.
    static constexpr std::int32_t kPixelsAtATime = 256;

public:
    C_Image imageIn;
    C_Image imageOut;
    Working working;
    RenderSettings settings;
    const float* gammaTable = nullptr;
    // How far the blurred picture lies beside its place.
    double offsetX = 0.0;
    double offsetY = 0.0;
    // For the fast form: the columns at offsetX. Without them rows take the plain form.
    const ShiftedColumns* columns = nullptr;
    // What is stored for each entry of the gamma table, or null.
    const Channel* storedTable = nullptr;

    static Channel StoredOf(double value, int index) {
        if constexpr (kIsInteger) {
            static_cast<void>(index);
            return static_cast<Channel>(ClampChannel(value, Scale::kWhite));
        } else {
            if (HostPixel::kHasAlpha && index == kColors) {
                return static_cast<float>(ClampChannel(value, Scale::kWhite));
            }
            // Zero by itself: clang 14 under a sanitizer makes a maximum of ">= 0", and a -0 would
            // lose its sign there.
            const auto rounded = static_cast<float>(value);
            if (value == 0.0) {
                return rounded;
            }
            return value > 0.0 ? rounded : 0.0f;
        }
    }

    // The blurred pixel itself replaces the source, and nothing but the tone curve shapes it.
    bool StoresToneAlone() const {
        return !HostPixel::kHasAlpha && settings.blend == kBlendNormal && !settings.adjustOn;
    }
    bool StoresTableAlone() const { return kIsInteger && StoresToneAlone(); }

    void ComposeRow(std::int32_t y) const {
        if (HasFastForm()) {
            ComposeRun(y, 0, imageOut.width, [this](std::int32_t row) {
                return reinterpret_cast<const float*>(working.Row(row));
            });
            return;
        }
        for (std::int32_t x = 0; x < imageOut.width; ++x) {
            double blurred[kChannels > 0 ? static_cast<std::size_t>(kChannels) : 1];
            ReadWorking(x, y, blurred);
            for (double& channel : blurred) {
                channel *= settings.intensity;
            }
            ApplyColorStage<HostPixel>(blurred, Stage());
            BlendAndStore(blurred, x, y);
        }
    }

    bool HasFastForm() const { return SelectRowKernels() != nullptr && columns != nullptr; }

    // The fast form for pixels from to end - 1 of row y; rowAt gives the blurred row y and the one
    // above or below it.
    template <class RowAt>
    void ComposeRun(std::int32_t y, std::int32_t from, std::int32_t end, RowAt rowAt) const {
        const double py = y + offsetY;
        const auto iy = static_cast<std::int32_t>(py);
        const float* upper = rowAt(iy);
        const float* lower = iy == imageOut.height - 1 ? upper : rowAt(iy + 1);
        ComposeBetween(upper, lower, py - iy, y, from, end);
    }

private:
    ColorStageSettings Stage() const {
        return {settings.contrast, settings.gammaExponent, settings.gammaOn,   settings.adjustOn,
                settings.hue,      settings.saturation,    settings.lightness, gammaTable};
    }

    // Bilinear, with the edge rules of the move itself.
    void ReadWorking(std::int32_t x, std::int32_t y, double* pixel) const {
        const double px = x + offsetX;
        const double py = y + offsetY;
        const auto ix = static_cast<std::int32_t>(px);
        const auto iy = static_cast<std::int32_t>(py);
        const double fx = px - ix;
        const double fy = py - iy;
        const unsigned char* upper = working.Pixel(ix, iy);
        if (fx == 0.0 && fy == 0.0) {
            for (int i = 0; i < kChannels; ++i) {
                pixel[i] = LoadChannel<float>(upper, i);
            }
            return;
        }
        const std::ptrdiff_t right = ix == working.width - 1 ? 0 : working.Stride();
        const unsigned char* lower = iy == working.height - 1 ? upper : upper + working.row_bytes;
        for (int i = 0; i < kChannels; ++i) {
            pixel[i] = (1.0 - fx) * (1.0 - fy) * LoadChannel<float>(upper, i) +
                       fx * (1.0 - fy) * LoadChannel<float>(upper + right, i) +
                       (1.0 - fx) * fy * LoadChannel<float>(lower, i) +
                       fx * fy * LoadChannel<float>(lower + right, i);
        }
    }

    void BlendAndStore(const double* blurred, std::int32_t x, std::int32_t y) const {
        ChannelArray<double, kChannels> result;
        const unsigned char* in = imageIn.Pixel(x, y);
        for (int i = 0; i < kChannels; ++i) {
            result[i] = static_cast<double>(LoadChannel<Channel>(in, i));
        }
        BlendPixels<HostPixel>(result, blurred, settings.blend);
        unsigned char* out = imageOut.Pixel(x, y);
        for (int i = 0; i < kChannels; ++i) {
            StoreChannel(out, i, StoredOf(result[i], i));
        }
    }

    void ComposeBetween(const float* upper, const float* lower, double lowerShare, std::int32_t y,
                        std::int32_t from, std::int32_t runEnd) const {
        const RowKernels& kernels = *SelectRowKernels();
        constexpr int capacity = kPixelsAtATime * kChannels + 4;
        ChannelArray<double, capacity> colors;
        ChannelArray<std::int32_t, capacity> indices;
        for (std::int32_t x = from; x < runEnd; x += kPixelsAtATime) {
            const std::int32_t end = std::min(x + kPixelsAtATime, runEnd);
            kernels.shiftToDouble[kChannels](colors, upper, lower, *columns, lowerShare,
                                             settings.intensity, x, end);
            if constexpr (kIsInteger) {
                kernels.toneIndices(indices, colors, (end - x) * kChannels, settings.contrast,
                                    Scale::kWhite, Scale::kGammaIndex);
                const std::int32_t next = BlendOver(kernels, colors, indices, x, end, y);
                const std::ptrdiff_t done = std::ptrdiff_t{next - x} * kChannels;
                FinishToned(colors + done, indices + done, next, end, y);
            } else if (StoresToneAlone()) {
                StoreTones(kernels, colors, x, end, y);
            } else {
                for (std::int32_t i = x; i < end; ++i) {
                    double* pixel = colors + (i - x) * kChannels;
                    ApplyColorStage<HostPixel>(pixel, Stage());
                    BlendAndStore(pixel, i, y);
                }
            }
        }
    }

    // Pixels x to end of row y of a float picture, from their blurred colours.
    void StoreTones(const RowKernels& kernels, const double* colors, std::int32_t x,
                    std::int32_t end, std::int32_t y) const {
        ChannelArray<float, kPixelsAtATime * kChannels> stored;
        const ToneRule rule{settings.contrast, settings.gammaExponent, settings.gammaOn};
        kernels.toneFloats(stored, colors, (end - x) * kChannels, rule);
        CopyPixels(imageOut.Pixel(x, y), imageOut.Stride(),
                   reinterpret_cast<const unsigned char*>(&stored[0]), HostPixel::kSize, end - x);
    }

    // Pixels x to end of row y, from their colours' indices into the gamma table.
    void FinishToned(double* colors, const std::int32_t* indices, std::int32_t x, std::int32_t end,
                     std::int32_t y) const {
        if (storedTable != nullptr) {
            unsigned char* out = imageOut.Pixel(x, y);
            for (std::int32_t i = x; i < end; ++i, out += imageOut.Stride()) {
                for (int c = 0; c < kColors; ++c) {
                    StoreChannel(out, c, storedTable[*indices++]);
                }
            }
            return;
        }
        FinishPixels(colors, indices, x, end, y);
    }

    // The usual case by itself: laid over the picture with its alpha, and nothing else. Gives the
    // first pixel that is left.
    std::int32_t BlendOver(const RowKernels& kernels, const double* colors,
                           const std::int32_t* indices, std::int32_t x, std::int32_t end,
                           std::int32_t y) const {
        if constexpr (kIsInteger && HostPixel::kHasAlpha && kColors == 3) {
            if (settings.blend != kBlendNormal || settings.adjustOn) {
                return x;
            }
            const TonedPixels pixels{colors,        indices,        gammaTable, kGammaTableSize - 1,
                                     Scale::kWhite, Scale::kInverse};
            const std::int32_t count = (end - x) / 4 * 4;
            // Packed, as hosts deliver them, or packed here.
            unsigned char packed[kPixelsAtATime * HostPixel::kSize];
            const unsigned char* in = imageIn.Pixel(x, y);
            if (imageIn.Stride() != HostPixel::kSize) {
                CopyPixels(packed, HostPixel::kSize, in, imageIn.Stride(), count);
                in = packed;
            }
            unsigned char* out = imageOut.Pixel(x, y);
            const bool isPacked = imageOut.Stride() == HostPixel::kSize;
            kernels.blendOver[sizeof(Channel)](isPacked ? out : packed, in, pixels, count);
            if (!isPacked) {
                CopyPixels(out, imageOut.Stride(), packed, HostPixel::kSize, count);
            }
            return x + count;
        }
        return x;
    }

    static void CopyPixels(unsigned char* out, std::ptrdiff_t outStride, const unsigned char* in,
                           std::ptrdiff_t inStride, std::int32_t count) {
        for (std::int32_t i = 0; i < count; ++i, out += outStride, in += inStride) {
            std::memcpy(out, in, HostPixel::kSize);
        }
    }

    void FinishPixels(double* colors, const std::int32_t* indices, std::int32_t x, std::int32_t end,
                      std::int32_t y) const {
        const ColorStageSettings stage = Stage();
        for (std::int32_t i = x; i < end; ++i, indices += kChannels, colors += kChannels) {
            for (int c = 0; c < kColors; ++c) {
                colors[c] = gammaTable[std::min(indices[c], kGammaTableSize - 1)];
            }
            FinishColorStage<HostPixel>(colors, stage);
            BlendAndStore(colors, i, y);
        }
    }
};

}  // namespace mv
