#pragma once

#include <cstring>

#include "image/MorvenhaleFilter.h"

namespace mv {

// Sets every byte of an accumulator image to 0, weights included. Rows run on the pool.
template <class Image>
class ClearImageFilter : public MorvenhaleFilter {
public:
    using MorvenhaleFilter::MorvenhaleFilter;

    Image image;

    virtual std::int32_t render(std::uint32_t position, std::uint32_t range) {
        const MeasuringPoint point(host_->GetActiveMeasurements(), "clearing");
        position_ = position;
        range_ = range;
        return host_->Iterate(image.height, [this](unsigned row, unsigned rows, unsigned id) {
            return static_cast<unsigned>(render_chunk(row, rows, id));
        });
    }

    virtual std::int32_t render_chunk(std::uint32_t thread_index, std::uint32_t, std::uint32_t) {
        const auto y = static_cast<std::int32_t>(thread_index);
        std::memset(image.Row(y), 0,
                    static_cast<std::size_t>(image.width) *
                        static_cast<std::size_t>(Image::Pixel_t::kSize));
        return ReportStep(position_, range_, thread_index,
                          static_cast<std::uint32_t>(image.height));
    }

private:
    std::uint32_t position_ = 0;
    std::uint32_t range_ = 1;
};

}  // namespace mv
