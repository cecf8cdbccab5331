#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "diagnostics/Log.h"
#include "diagnostics/Measurement.h"
#include "effect/Composer.h"
#include "effect/CopyImageFilter.h"
#include "effect/DecodeTable.h"
#include "effect/HslRangeSelectionFilter.h"
#include "effect/MoveSubPixelImageFilter.h"
#include "effect/MultImageFilter.h"
#include "effect/RadialBlurFilter.h"
#include "effect/RenderSettings.h"
#include "effect/StreamedPicture.h"
#include "effect/TransferFunction.h"
#include "effect/VolumetricAbberationFilter.h"
#include "image/MorvenhaleFilter.h"
#include "platform/LargePages.h"

namespace mv {

// The pipeline of one render, from the host's image to the finished result: selection, mask,
// linear light, sub-pixel move, blur, composition. Knows neither dialog nor host record; all
// lengths follow from the image's own size. Lives on the typed render's stack.
template <class C_Image, class C_ImageMult>
class RadialBlurEffect : public MorvenhaleFilter {
    using HostPixel = typename C_Image::Pixel_t;
    using Channel = typename HostPixel::Channel;
    using Working = WorkingImage<HostPixel>;
    using AccumulatorPixel = typename PixelFamily<HostPixel>::Accumulator;
    using Scale = WhiteScale<HostPixel::kWhite>;
    static constexpr int kColors = HostPixel::kColors;
    static constexpr int kChannels = HostPixel::kChannels;

    // The progress of the pipeline counts in sixths.
    static constexpr std::uint32_t kStages = 6;

public:
    using MorvenhaleFilter::MorvenhaleFilter;

    C_Image imageIn;
    C_Image imageOut;
    // What the colour selection looks at.
    C_Image imageSelection;
    // The host's mask: multiplied into the picture, or shown by the view "size selection".
    C_ImageMult imageMult;
    C_ImageMult imageOffset;
    RenderSettings settings;

    virtual std::int32_t render() {
        WriteLog(kTrace, "RadialBlurEffect<C_Image, C_ImageMult>::render()");
        working_ = Working(imageIn);
        working_.width = imageOut.width;
        working_.height = imageOut.height;
        working_.row_bytes = imageOut.width * Working::Pixel_t::kSize;
        working_.dynamic_pixel_size = Working::Pixel_t::kSize;
        working_.is_connected = true;
        working_.is_premultiplied = true;
        working_.data = nullptr;
        gammaTable_ = Allocate<float>(kGammaTableSize * sizeof(float));
        secondTable_ = Allocate<void>(kGammaTableSize * sizeof(float));
        std::int32_t status = host_->StatusOutOfMemory();
        if (gammaTable_ != nullptr && secondTable_ != nullptr) {
            FillGammaTable(gammaTable_, settings.gammaExponent, settings.gammaOn, Scale::kWhite);
            status = RunStages();
        }
        host_->FreeMemory(secondTable_);
        host_->FreeMemory(gammaTable_);
        host_->FreeMemory(working_.data);
        return status;
    }

    // The final composition of a band of rows.
    virtual std::int32_t render_chunk(std::uint32_t thread_index, std::uint32_t thread_iterations,
                                      std::uint32_t) {
        std::int32_t status = host_->StatusOk();
        const RowBand band = BandOf(imageOut.height, thread_index, thread_iterations);
        for (std::int32_t y = band.first; y < band.end && IsOk(status); ++y) {
            composer_.ComposeRow(y);
            status = ReportStep(5, kStages, static_cast<std::uint32_t>(y), Rows());
        }
        return status;
    }

private:
    std::uint32_t Rows() const { return static_cast<std::uint32_t>(imageOut.height); }

    using Selection = HslRangeSelectionFilter<C_Image, Working, C_Image>;

    std::int32_t RunStages() {
        Selection selection(host_);
        float* table = SetUp(selection);
        std::int32_t status = host_->StatusOk();
        if (settings.mode == kModeNormal) {
            RadialBlurFilter<Working, AccumulatorPixel, C_ImageMult> blur(host_);
            status = RunStages(selection, blur);
        } else {
            VolumetricAbberationFilter<Working, AccumulatorPixel, C_ImageMult> blur(host_);
            blur.invert_gradient = settings.invertGradient;
            status = RunStages(selection, blur);
        }
        host_->FreeMemory(table);
        return status;
    }

    template <class Blur>
    std::int32_t RunStages(Selection& selection, Blur& blur) {
        SetUp(blur);
        composer_.offsetX = -Shift().dx;
        composer_.offsetY = -Shift().dy;
        const std::int32_t status = CanStream(selection) && blur.CanStream()
                                        ? StreamStages(selection, blur)
                                        : RunStagesInTurn(selection, blur);
        host_->FreeMemory(columnMemory_);
        columnMemory_ = nullptr;
        return status;
    }

    template <class Blur>
    std::int32_t RunStagesInTurn(Selection& selection, Blur& blur) {
        if (!AllocateWorking()) {
            return host_->StatusOutOfMemory();
        }
        selection.destination = working_;
        blur.imageIn = working_;
        blur.imageOut = working_;
        MoveSubPixelImageFilter<Working> move(host_);
        move.image = working_;
        move.dx = Shift().dx;
        move.dy = Shift().dy;
        // The move makes the rows of the selection on its way where nothing comes between.
        const bool isOneGo = settings.show == kShowNormal && settings.strength != 0.0 &&
                             IsMaskWithin(selection) && move.CanTakeRows();
        if (isOneGo) {
            selection.Prepare();
            move.source = [&selection](std::int32_t y, std::int32_t from, std::int32_t end,
                                       float* out) {
                selection.RenderRun(y, from, end, reinterpret_cast<unsigned char*>(out));
            };
        }
        std::int32_t status = isOneGo ? ReportPrepared(ReportRows(0)) : PrepareWorking(selection);
        if (IsOk(status) && settings.show != kShowNormal) {
            return ShowSelection();
        }
        if (IsOk(status) && settings.strength != 0.0) {
            status = move.render(3, kStages);
            status = IsOk(status) ? blur.render(4, kStages) : status;
        }
        return IsOk(status) ? Compose() : status;
    }

    bool AllocateWorking() {
        const std::uint64_t bytes = Pixels() * static_cast<std::uint64_t>(Working::Pixel_t::kSize);
        working_.data = Allocate<unsigned char>(bytes);
        if (working_.data == nullptr) {
            return false;
        }
        PreferLargePages(working_.data, bytes);
        return true;
    }

    // Whether the mask is no stage of its own.
    bool IsMaskWithin(const Selection& selection) const {
        return !IsMasked() || selection.mask.data != nullptr;
    }

    // Whether all stages may run on pieces of the picture while the rays of the blur pass them.
    bool CanStream(const Selection& selection) const {
        return settings.show == kShowNormal && settings.strength != 0.0 &&
               IsMaskWithin(selection) && SelectRowKernels() != nullptr && NeedsColumns() &&
               MovedRows::Serves(Shift()) && !AreOverlapping();
    }

    // A source in the destination's memory must be read before that is written.
    bool AreOverlapping() const {
        const auto extent = [](const C_Image& image, const unsigned char*& low,
                               const unsigned char*& high) {
            const unsigned char* first = image.Row(0);
            const unsigned char* last = image.Row(image.height - 1);
            low = std::min(first, last);
            high = std::max(first, last) + std::int64_t{image.width} * image.Stride();
        };
        const unsigned char* inLow = nullptr;
        const unsigned char* inHigh = nullptr;
        const unsigned char* outLow = nullptr;
        const unsigned char* outHigh = nullptr;
        extent(imageIn, inLow, inHigh);
        extent(imageOut, outLow, outHigh);
        return inLow < outHigh && outLow < inHigh;
    }

    template <class Blur>
    std::int32_t StreamStages(Selection& selection, Blur& blur) {
        selection.destination = working_;
        selection.Prepare();
        void* memory = Allocate<void>(StreamedPicture<C_Image, Selection>::Bytes(Shift()));
        PrepareComposer();
        std::int32_t status = host_->StatusOutOfMemory();
        if (memory != nullptr && composer_.HasFastForm()) {
            StreamedPicture<C_Image, Selection> stream(
                memory, Shift(), selection, composer_, [this](std::int32_t y) {
                    return ReportStep(5, kStages, static_cast<std::uint32_t>(y), Rows());
                });
            blur.stream = &stream;
            status = ReportPrepared(ReportRows(0));
            status = IsOk(status) ? ReportRows(3) : status;
            status = IsOk(status) ? blur.render(4, kStages) : status;
        }
        host_->FreeMemory(memory);
        return status;
    }

    std::int32_t Compose() {
        const MeasuringPoint point(host_->GetActiveMeasurements(), "composition");
        PrepareComposer();
        return host_->Iterate(host_->GetThreadCount(imageOut.height),
                              [this](unsigned band, unsigned bands, unsigned id) {
                                  return static_cast<unsigned>(render_chunk(band, bands, id));
                              });
    }

    // Samples that are no numbers would reach their neighbours through a share of nothing.
    bool NeedsColumns() const {
        return composer_.offsetX != 0.0 || composer_.offsetY != 0.0 ||
               !std::is_same_v<Channel, float>;
    }

    void PrepareComposer() {
        composer_.imageIn = imageIn;
        composer_.imageOut = imageOut;
        composer_.working = working_;
        composer_.settings = settings;
        composer_.gammaTable = gammaTable_;
        if (NeedsColumns()) {
            columnMemory_ = Allocate<void>(ShiftColumns::Bytes(imageOut.width));
        }
        if (columnMemory_ != nullptr) {
            columns_.Fill(columnMemory_, imageOut.width, composer_.offsetX);
            composer_.columns = &columns_.Get();
        }
        if (composer_.StoresTableAlone()) {
            auto* stored = static_cast<Channel*>(secondTable_);
            for (std::int32_t i = 0; i < kGammaTableSize; ++i) {
                stored[i] = Composer<C_Image>::StoredOf(gammaTable_[i], 0);
            }
            composer_.storedTable = stored;
        }
    }

    std::uint64_t Pixels() const {
        return static_cast<std::uint64_t>(imageOut.width) *
               static_cast<std::uint64_t>(imageOut.height);
    }

    bool IsLinear() const { return settings.gammaOn && settings.show == kShowNormal; }
    bool IsMasked() const { return imageMult.data != nullptr; }

    // 8-bit weights, of alpha or mask, that a decode table has to serve; 0 where none can.
    std::uint32_t TableWeights() const {
        constexpr bool is8Bit = HostPixel::kWhite == 255;
        if (std::is_same_v<Channel, float> || (HostPixel::kHasAlpha && IsMasked())) {
            return 0;
        }
        if (HostPixel::kHasAlpha || IsMasked()) {
            return is8Bit ? 256 : 0;
        }
        return 1;
    }

    // A table pays where there are more pixels than entries. Without memory it is done without.
    float* AllocateDecodeTable() {
        const std::uint32_t entries = RowDecoder::TableEntries(HostPixel::kWhite, TableWeights());
        if (!IsLinear() || entries == 0 || Pixels() < entries) {
            return nullptr;
        }
        auto* memory = Allocate<float>(std::uint64_t{entries} * sizeof(float));
        if (memory != nullptr) {
            decoder_.BuildTable(memory, TableWeights());
        }
        return memory;
    }

    // Gives the memory of the decode table, or null.
    float* SetUp(Selection& selection) {
        float* table = AllocateDecodeTable();
        selection.source = imageIn;
        selection.reference = imageSelection.is_connected ? imageSelection : imageIn;
        selection.params.showSelection = settings.show == kShowSelectionOnly;
        selection.params.lightLow = settings.selectionLow;
        selection.params.lightHigh = settings.selectionHigh;
        selection.params.lightClimax = settings.selectionClimax;
        selection.params.lightSoften = settings.selectionSoften;
        const bool takesMask = table != nullptr && IsMasked() && !HostPixel::kHasAlpha &&
                               !(settings.selectionSoften > 0.0);
        if (takesMask) {
            selection.mask = imageMult;
        }
        selection.decoder = IsLinear() && (!IsMasked() || takesMask) ? &decoder_ : nullptr;
        return table;
    }

    // Selection, mask and linear light. Each row is decoded by the stage that touches it last.
    std::int32_t PrepareWorking(Selection& selection) {
        const MeasuringPoint point(host_->GetActiveMeasurements(), "selection, linear light");
        const std::int32_t status = selection.render(0, kStages);
        if (IsOk(status) && IsMasked() && selection.mask.data == nullptr) {
            const std::int32_t masked = MultiplyByMask();
            return IsOk(masked) && IsLinear() ? ReportRows(2) : masked;
        }
        return ReportPrepared(status);
    }

    // After the selection, when mask and linear light are part of it.
    std::int32_t ReportPrepared(std::int32_t status) const {
        if (IsOk(status) && IsMasked()) {
            status = ReportRows(1);
        }
        return IsOk(status) && IsLinear() ? ReportRows(2) : status;
    }

    // The progress of a stage whose work another one has done.
    std::int32_t ReportRows(std::uint32_t position) const {
        std::int32_t status = host_->StatusOk();
        for (std::uint32_t row = 0; row < Rows() && IsOk(status); ++row) {
            status = ReportStep(position, kStages, row, Rows());
        }
        return status;
    }

    std::int32_t MultiplyByMask() {
        MultImageFilter<Working, C_ImageMult> filter(host_);
        filter.image = working_;
        filter.mask = imageMult;
        filter.decoder = IsLinear() ? &decoder_ : nullptr;
        return filter.render(1, kStages);
    }

    std::int32_t ShowSelection() {
        const MeasuringPoint point(host_->GetActiveMeasurements(), "copy of the view");
        CopyImageFilter<Working, C_Image> filter(host_);
        filter.source = working_;
        filter.destination = imageOut;
        filter.premultiplication = kPremultiplicationOfSource;
        std::int32_t status = filter.render(5, kStages);
        for (std::int32_t y = 0; y < imageOut.height && IsOk(status); ++y) {
            for (std::int32_t x = 0; x < imageOut.width; ++x) {
                FinishView(x, y);
            }
            status = host_->ReportProgress(100, 100, 0);
        }
        return status;
    }

    // Mask values are written as they stand, 0 to 255, into 16-bit and float images too: a 16-bit
    // document shows them nearly black. It is meant.
    void FinishView(std::int32_t x, std::int32_t y) const {
        unsigned char* out = imageOut.Pixel(x, y);
        if (settings.show == kShowSizeSelection) {
            const auto value = imageOffset.is_connected
                                   ? static_cast<Channel>(*imageOffset.Pixel(x, y))
                                   : static_cast<Channel>(HostPixel::kWhite);
            for (int i = 0; i < kColors; ++i) {
                StoreChannel(out, i, value);
            }
        }
        if constexpr (HostPixel::kHasAlpha) {
            StoreChannel(out, HostPixel::kAlphaIndex, static_cast<Channel>(HostPixel::kWhite));
        }
    }

    // How far to move so that the centre falls on a whole pixel: -0.5 to below 0.5. The whole part
    // truncates toward zero while the fraction comes from floor, so that both are one apart for
    // negative centres; it is meant.
    static double MoveOf(double center) { return std::fabs(center - std::floor(center)) - 0.5; }

    ShiftedPicture Shift() const {
        const bool isMoved = settings.strength != 0.0;
        return {imageOut.width, imageOut.height, kChannels,
                isMoved ? MoveOf(settings.centerX) : 0.0, isMoved ? MoveOf(settings.centerY) : 0.0};
    }

    // The blur gets no selection image: the mask does not change the length of the blur.
    template <class Blur>
    void SetUp(Blur& blur) const {
        blur.imageIn = working_;
        blur.imageOut = working_;
        blur.zoomStart = settings.zoomStart;
        blur.strength = settings.strength;
        blur.centerX = static_cast<std::int32_t>(settings.centerX);
        blur.centerY = static_cast<std::int32_t>(settings.centerY);
        blur.holdoutRadius = settings.holdoutPixels;
    }

    Working working_;
    float* gammaTable_ = nullptr;
    // What is stored for each entry of the gamma table.
    void* secondTable_ = nullptr;
    Composer<C_Image> composer_;
    ShiftColumns columns_;
    void* columnMemory_ = nullptr;
    RowDecoder decoder_{kChannels, HostPixel::kHasAlpha ? kColors : -1, HostPixel::kWhite,
                        Scale::kInverse};
};

}  // namespace mv
