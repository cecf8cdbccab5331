#pragma once

#include "effect/DecodeTable.h"
#include "image/MorvenhaleFilter.h"

namespace mv {

// Multiplies a working image, alpha included, by an 8-bit gray mask of the same size. Rows run on
// the pool.
template <class Image, class Mask>
class MultImageFilter : public MorvenhaleFilter {
public:
    using MorvenhaleFilter::MorvenhaleFilter;

    Image image;
    Mask mask;
    // Takes finished rows into linear light, where the caller wants that.
    const RowDecoder* decoder = nullptr;

    virtual std::int32_t render(std::uint32_t position, std::uint32_t range) {
        position_ = position;
        range_ = range;
        return host_->Iterate(image.height, [this](unsigned row, unsigned rows, unsigned id) {
            return static_cast<unsigned>(render_chunk(row, rows, id));
        });
    }

    virtual std::int32_t render_chunk(std::uint32_t thread_index, std::uint32_t, std::uint32_t) {
        constexpr int channels = Image::Pixel_t::kChannels;
        const auto y = static_cast<std::int32_t>(thread_index);
        for (std::int32_t x = 0; x < image.width; ++x) {
            const double m = *mask.Pixel(x, y) * kMaskScale;
            unsigned char* pixel = image.Pixel(x, y);
            for (int i = 0; i < channels; ++i) {
                const double value = LoadChannel<float>(pixel, i);
                StoreChannel(pixel, i, static_cast<float>(value * m));
            }
        }
        if (decoder != nullptr) {
            decoder->DecodeRow(reinterpret_cast<float*>(image.Row(y)), image.width);
        }
        return ReportStep(position_, range_, thread_index,
                          static_cast<std::uint32_t>(image.height));
    }

private:
    std::uint32_t position_ = 0;
    std::uint32_t range_ = 1;
};

}  // namespace mv
