#pragma once

#include <type_traits>

#include "effect/DecodeTable.h"
#include "effect/HslRange.h"
#include "image/MorvenhaleFilter.h"

namespace mv {

// First stage: turns the host image into the float working image, weighted by alpha and by the
// colour selection of a reference image. Rows run on the pool.
template <class SourceImage, class DestinationImage, class ReferenceImage>
class HslRangeSelectionFilter : public MorvenhaleFilter {
    using SourcePixel = typename SourceImage::Pixel_t;
    using ReferencePixel = typename ReferenceImage::Pixel_t;
    using Channel = typename SourcePixel::Channel;
    using ReferenceChannel = typename ReferencePixel::Channel;
    using Scale = WhiteScale<SourcePixel::kWhite>;
    static constexpr int kColors = SourcePixel::kColors;
    static constexpr int kChannels = SourcePixel::kChannels;

public:
    using MorvenhaleFilter::MorvenhaleFilter;

    SourceImage source;
    DestinationImage destination;
    ReferenceImage reference;
    HslRangeParams params;
    // Takes finished rows into linear light, where the caller wants that and nothing comes between.
    const RowDecoder* decoder = nullptr;
    // Multiplied in with the look-up of a decode table that has weights; else not used.
    MaskImage mask;

    virtual std::int32_t render(std::uint32_t position, std::uint32_t range) {
        position_ = position;
        range_ = range;
        Prepare();
        return host_->Iterate(destination.height, [this](unsigned row, unsigned rows, unsigned id) {
            return static_cast<unsigned>(render_chunk(row, rows, id));
        });
    }

    virtual std::int32_t render_chunk(std::uint32_t thread_index, std::uint32_t, std::uint32_t) {
        const auto y = static_cast<std::int32_t>(thread_index);
        RenderRun(y, 0, destination.width, destination.Row(y));
        return ReportStep(position_, range_, thread_index,
                          static_cast<std::uint32_t>(destination.height));
    }

    // Once all fields are set, for RenderRun.
    void Prepare() {
        evaluator_ = BuildHslRangeEvaluator<ReferenceChannel>(params);
        isLightnessOnly_ = DependsOnLightnessAlone(evaluator_);
        const bool isHard = isLightnessOnly_ && !(evaluator_.lightness.power > 0.0);
        isLookedUp_ = isHard && !params.showSelection && decoder != nullptr && decoder->HasTable();
    }

    // Whether it takes a look-up for a channel, and no power.
    bool IsLookedUp() const { return isLookedUp_; }

    // Puts pixels from to end - 1 of row y, decoded where a decoder is given, to out, packed. For
    // callers that have a use for them at once; any thread.
    void RenderRun(std::int32_t y, std::int32_t from, std::int32_t end, unsigned char* out) const {
        if (isLookedUp_) {
            LookUpRun(y, {from, end}, out);
            return;
        }
        for (std::int32_t x = from; x < end; ++x) {
            RenderPixel(x, y, out + (x - from) * destination.Stride());
        }
        if (decoder != nullptr) {
            decoder->DecodeRow(reinterpret_cast<float*>(out), end - from);
        }
    }

private:
    struct Columns {
        std::int32_t from;
        std::int32_t end;
    };

    // A channel takes few values under a hard selection: a table holds what becomes of each.
    void LookUpRun(std::int32_t y, const Columns& columns, unsigned char* out) const {
        if constexpr (!std::is_same_v<Channel, float>) {
            const bool isAll = evaluator_.lightness.low == 0.0 && evaluator_.lightness.high > 1.0;
            const bool isMasked = mask.data != nullptr;
            if (isAll && !isMasked && IsTableAlone()) {
                LookUpAll(y, columns, out);
                return;
            }
            if constexpr (SourcePixel::kHasAlpha) {
                if (isAll && source.Stride() == SourcePixel::kSize) {
                    LookUpWeighted(y, columns, out);
                    return;
                }
            }
            const unsigned char* weights = isMasked ? mask.Row(y) + columns.from : nullptr;
            const unsigned char* in = source.Pixel(columns.from, y);
            for (std::int32_t x = columns.from; x < columns.end; ++x) {
                std::uint32_t weight = isMasked ? *weights++ : 0;
                if constexpr (SourcePixel::kHasAlpha) {
                    weight = LoadChannel<Channel>(in, SourcePixel::kAlphaIndex);
                    const double a = weight;
                    StoreChannel(out, SourcePixel::kAlphaIndex,
                                 static_cast<float>(a * (a * Scale::kInverse)));
                }
                const bool isSelected = isAll || Selection(x, y) != 0.0;
                const float* table = decoder->Table(isSelected ? weight : 0);
                for (int i = 0; i < kColors; ++i) {
                    const std::size_t value = isSelected ? LoadChannel<Channel>(in, i) : 0;
                    StoreChannel(out, i, table[value]);
                }
                if (SourcePixel::kHasAlpha && !isSelected) {
                    StoreChannel(out, kChannels - 1, 0.0f);
                }
                in += source.Stride();
                out += destination.Stride();
            }
        } else {
            static_cast<void>(y);
            static_cast<void>(columns);
            static_cast<void>(out);
        }
    }

    // Without alpha and gaps a row is one sequence of samples.
    bool IsTableAlone() const {
        return !SourcePixel::kHasAlpha &&
               source.Stride() == static_cast<std::ptrdiff_t>(kChannels * sizeof(Channel));
    }

    // Each channel of the run by itself; loads come four at a time before their stores, since the
    // compiler cannot know that the images are apart.
    void LookUpAll(std::int32_t y, const Columns& columns, unsigned char* out) const {
        const float* table = decoder->Table(0);
        const unsigned char* in = source.Pixel(columns.from, y);
        const std::int32_t count = (columns.end - columns.from) * kChannels;
        std::int32_t i = 0;
        for (; i + 4 <= count; i += 4) {
            const float values[] = {
                table[LoadChannel<Channel>(in, i)], table[LoadChannel<Channel>(in, i + 1)],
                table[LoadChannel<Channel>(in, i + 2)], table[LoadChannel<Channel>(in, i + 3)]};
            for (int c = 0; c < 4; ++c) {
                StoreChannel(out, i + c, values[c]);
            }
        }
        for (; i < count; ++i) {
            StoreChannel(out, i, table[LoadChannel<Channel>(in, i)]);
        }
    }

    // Pixels without gaps, each under the weight of its alpha.
    void LookUpWeighted(std::int32_t y, const Columns& columns, unsigned char* out) const {
        const unsigned char* in = source.Pixel(columns.from, y);
        for (std::int32_t x = columns.from; x < columns.end; ++x) {
            const auto alpha = LoadChannel<Channel>(in, SourcePixel::kAlphaIndex);
            const float* table = decoder->Table(alpha);
            ChannelArray<float, kChannels> values;
            for (int i = 0; i < kColors; ++i) {
                values[i] = table[LoadChannel<Channel>(in, i)];
            }
            const double a = alpha;
            values[kChannels - 1] = static_cast<float>(a * (a * Scale::kInverse));
            for (int i = 0; i < kChannels; ++i) {
                StoreChannel(out, i, values[i]);
            }
            in += SourcePixel::kSize;
            out += DestinationImage::Pixel_t::kSize;
        }
    }

    void RenderPixel(std::int32_t x, std::int32_t y, unsigned char* out) const {
        ChannelArray<double, kChannels> pixel = {};
        const bool inside = source.Contains(x, y);
        if (inside) {
            WeightedSource(x, y, pixel);
        }
        if (!params.enabled) {
            for (double& channel : pixel) {
                channel = inside && params.showSelection ? Scale::kWhite : channel;
            }
        } else {
            ApplySelection(Selection(x, y), pixel);
        }
        for (int i = 0; i < kChannels; ++i) {
            StoreChannel(out, i, static_cast<float>(pixel[i]));
        }
    }

    void ApplySelection(double e, double* pixel) const {
        if (params.showSelection) {
            // Alpha keeps its square here, unscaled by the selection.
            for (int i = 0; i < kColors; ++i) {
                pixel[i] = e * Scale::kWhite;
            }
        } else {
            for (int i = 0; i < kChannels; ++i) {
                pixel[i] *= e;
            }
        }
    }

    double Selection(std::int32_t x, std::int32_t y) const {
        const std::int32_t xr = x - reference.origin_x + destination.origin_x;
        const std::int32_t yr = y - reference.origin_y + destination.origin_y;
        if (!reference.Contains(xr, yr)) {
            return 0.0;
        }
        const unsigned char* pixel = reference.Pixel(xr, yr);
        ChannelArray<ReferenceChannel, ReferencePixel::kColors> colors;
        for (int i = 0; i < ReferencePixel::kColors; ++i) {
            colors[i] = LoadChannel<ReferenceChannel>(pixel, i);
        }
        if constexpr (ReferencePixel::kHasAlpha) {
            if (!reference.is_premultiplied) {
                WeightReference(LoadChannel<ReferenceChannel>(pixel, ReferencePixel::kAlphaIndex),
                                colors);
            }
        }
        return isLightnessOnly_ ? EvaluateLightness<ReferencePixel>(evaluator_, colors)
                                : EvaluateHslRange<ReferencePixel>(evaluator_, colors);
    }

    // In single precision, and truncated to the channel type, so that the evaluator sees a
    // weighted pixel of the image's own type.
    static void WeightReference(ReferenceChannel alpha, ReferenceChannel* colors) {
        constexpr float kInverseWhite = ReferencePixel::kWhite == 255     ? 0.003921569f
                                        : ReferencePixel::kWhite == 32768 ? 3.0517578e-05f
                                                                          : 1.0f;
        const float weight = static_cast<float>(alpha) * kInverseWhite;
        for (int i = 0; i < ReferencePixel::kColors; ++i) {
            const float weighted = static_cast<float>(colors[i]) * weight;
            if constexpr (std::is_integral_v<ReferenceChannel>) {
                // 16-bit samples above white, which no host should give, may come out beyond the
                // type: the lower bits count, as processors truncate.
                colors[i] = static_cast<ReferenceChannel>(static_cast<std::int32_t>(weighted));
            } else {
                colors[i] = weighted;
            }
        }
    }

    // It is meant that alpha is multiplied by alpha like the colours: a half-transparent pixel
    // comes out with a quarter of white.
    void WeightedSource(std::int32_t x, std::int32_t y, double* pixel) const {
        const unsigned char* in = source.Pixel(x, y);
        for (int i = 0; i < kChannels; ++i) {
            pixel[i] = static_cast<double>(LoadChannel<Channel>(in, i));
        }
        if constexpr (SourcePixel::kHasAlpha) {
            const double weight = pixel[SourcePixel::kAlphaIndex] * Scale::kInverse;
            for (int i = 0; i < kChannels; ++i) {
                pixel[i] *= weight;
            }
        }
    }

    HslRangeEvaluator evaluator_{};
    bool isLightnessOnly_ = false;
    bool isLookedUp_ = false;
    std::uint32_t position_ = 0;
    std::uint32_t range_ = 1;
};

}  // namespace mv
