#pragma once

#include <type_traits>

#include "image/MorvenhaleFilter.h"

namespace mv {

// What CopyImageFilter makes of the destination's premultiplied flag before the rows run.
constexpr std::int32_t kPremultiplicationOfSource = 0;
constexpr std::int32_t kPremultiplicationOn = 1;
constexpr std::int32_t kPremultiplicationOff = 2;

// Copies a float working image into an image of another channel type and the same white. Rows
// run on the pool.
template <class SourceImage, class DestinationImage>
class CopyImageFilter : public MorvenhaleFilter {
    using SourcePixel = typename SourceImage::Pixel_t;
    using Pixel = typename DestinationImage::Pixel_t;
    using Channel = typename Pixel::Channel;
    using Scale = WhiteScale<Pixel::kWhite>;
    static constexpr int kColors = Pixel::kColors;
    static constexpr int kChannels = Pixel::kChannels;

public:
    using MorvenhaleFilter::MorvenhaleFilter;

    SourceImage source;
    DestinationImage destination;
    std::int32_t premultiplication = kPremultiplicationOfSource;
    std::int32_t offset_x = 0;
    std::int32_t offset_y = 0;

    virtual std::int32_t render(std::uint32_t position, std::uint32_t range) {
        position_ = position;
        range_ = range;
        if (premultiplication == kPremultiplicationOfSource) {
            destination.is_premultiplied = source.is_premultiplied;
        } else if (premultiplication == kPremultiplicationOn) {
            destination.is_premultiplied = true;
        } else if (premultiplication == kPremultiplicationOff) {
            destination.is_premultiplied = false;
        }
        return host_->Iterate(destination.height, [this](unsigned row, unsigned rows, unsigned id) {
            return static_cast<unsigned>(render_chunk(row, rows, id));
        });
    }

    virtual std::int32_t render_chunk(std::uint32_t thread_index, std::uint32_t, std::uint32_t) {
        if (source.data == nullptr || destination.data == nullptr) {
            return host_->StatusOk();
        }
        const auto y = static_cast<std::int32_t>(thread_index);
        for (std::int32_t x = 0; x < destination.width; ++x) {
            CopyPixel(x, y);
        }
        return ReportStep(position_, range_, thread_index,
                          static_cast<std::uint32_t>(destination.height));
    }

private:
    void CopyPixel(std::int32_t x, std::int32_t y) const {
        ChannelArray<double, kChannels> pixel = {};
        const std::int32_t xs = x + offset_x;
        const std::int32_t ys = y + offset_y;
        if (source.Contains(xs, ys)) {
            const unsigned char* in = source.Pixel(xs, ys);
            for (int i = 0; i < kChannels; ++i) {
                pixel[i] = LoadChannel<float>(in, i);
                if constexpr (!std::is_same_v<Channel, float>) {
                    pixel[i] = ClampChannel(pixel[i], Scale::kWhite);
                }
            }
        } else if constexpr (Pixel::kHasAlpha) {
            // The raw value 1 in every type: almost transparent in the integer types. It is meant.
            pixel[Pixel::kAlphaIndex] = 1.0;
        }
        ConvertPremultiplication(pixel);
        unsigned char* out = destination.Pixel(x, y);
        for (int i = 0; i < kChannels; ++i) {
            Store(out, i, pixel[i]);
        }
    }

    void ConvertPremultiplication(double* pixel) const {
        if constexpr (Pixel::kHasAlpha) {
            if (source.is_premultiplied == destination.is_premultiplied) {
                return;
            }
            const double alpha = pixel[Pixel::kAlphaIndex];
            double factor = alpha * Scale::kInverse;
            if (source.is_premultiplied) {
                const double rounded = static_cast<float>(alpha);
                factor = rounded > kAlphaGuard ? Scale::kWhite / rounded : 1.0;
            }
            for (int i = 0; i < kColors; ++i) {
                pixel[i] *= factor;
            }
        }
    }

    // An integer channel keeps the low part of a value that the conversion took above white.
    static void Store(unsigned char* out, int index, double value) {
        if constexpr (std::is_same_v<Channel, float>) {
            StoreChannel(out, index, static_cast<float>(value));
        } else {
            const double bounded = ClampChannel(value, 2147483647.0);
            StoreChannel(out, index, static_cast<Channel>(static_cast<std::int32_t>(bounded)));
        }
    }

    std::uint32_t position_ = 0;
    std::uint32_t range_ = 1;
};

}  // namespace mv
