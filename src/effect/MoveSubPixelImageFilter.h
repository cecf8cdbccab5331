#pragma once

#include <algorithm>
#include <atomic>
#include <cstring>

#include "effect/MovedRows.h"
#include "effect/ShiftColumns.h"
#include "image/MorvenhaleFilter.h"

namespace mv {

// Shifts a working image by less than a pixel, in place: pixel (x, y) becomes the bilinear sample
// at (x + dx, y + dy). The plain form is one thread's, rows and columns following the sign of the
// move so that a pixel is overwritten only after every later read of it. The fast form gives the
// same bytes in bands of rows: the row that a band needs of its neighbour is set aside before, or
// rows are made on the way, by their source, which spares the image one passage through memory.
template <class Image>
class MoveSubPixelImageFilter : public MorvenhaleFilter {
    static constexpr int kChannels = Image::Pixel_t::kChannels;
    static constexpr std::uint32_t kRowsOfBand = 3;

public:
    using MorvenhaleFilter::MorvenhaleFilter;
    ~MoveSubPixelImageFilter() override { host_->FreeMemory(scratch_); }

    Image image;
    double dx = 0.0;
    double dy = 0.0;
    // Gives the picture as it was, on any thread. With it image is only written, and need not hold
    // the picture; see CanTakeRows.
    MovedRows::Source source;

    // Whether render will ask the source, once dx and dy are set; else it needs the picture in
    // image, and no source. Gets the memory for it.
    bool CanTakeRows() {
        return CanMoveInBands() && MovedRows::Serves(Shift()) && AllocateScratch();
    }

    virtual std::int32_t render(std::uint32_t position, std::uint32_t range) {
        const MeasuringPoint point(host_->GetActiveMeasurements(),
                                   source ? "selection, linear light, move" : "move");
        position_ = position;
        range_ = range;
        rowsDone_ = 0;
        // Each pixel onto itself: a neighbour that is no number stays out, even as nothing of it.
        if (dx == 0.0 && dy == 0.0) {
            return ReportAllRows();
        }
        if (scratch_ == nullptr && !(CanMoveInBands() && AllocateScratch())) {
            return RenderPlain();
        }
        const std::int32_t status = RenderBands();
        host_->FreeMemory(scratch_);
        scratch_ = nullptr;
        return status;
    }

private:
    ShiftedPicture Shift() const { return {image.width, image.height, kChannels, dx, dy}; }

    bool CanMoveInBands() {
        kernels_ = SelectRowKernels();
        bands_ = host_->GetThreadCount(image.height / 2);
        return (dx != 0.0 || dy != 0.0) && kernels_ != nullptr && image.height >= 2 * bands_;
    }

    std::int32_t RenderPlain() {
        std::int32_t status = host_->StatusOk();
        for (std::int32_t step = 0; step < image.height && IsOk(status); ++step) {
            MoveRow(dy >= 0.0 ? step : image.height - 1 - step);
            status = ReportRow();
        }
        return status;
    }

    std::int32_t ReportAllRows() {
        std::int32_t status = host_->StatusOk();
        for (std::int32_t step = 0; step < image.height && IsOk(status); ++step) {
            status = ReportRow();
        }
        return status;
    }

    std::int32_t ReportRow() {
        return ReportStep(position_, range_, rowsDone_.fetch_add(1, std::memory_order_relaxed) + 1,
                          static_cast<std::uint32_t>(image.height));
    }

    void MoveRow(std::int32_t y) const {
        const double py = y + dy;
        const auto iy = static_cast<std::int32_t>(py);
        const double fy = py - iy;
        const unsigned char* upper = image.Row(iy);
        const unsigned char* lower = image.Row(iy == image.height - 1 ? iy : iy + 1);
        for (std::int32_t step = 0; step < image.width; ++step) {
            const std::int32_t x = dx >= 0.0 ? step : image.width - 1 - step;
            MovePixel(x, y, fy, upper, lower);
        }
    }

    // Before the first column or row the fraction is negative and the sample extrapolates, from a
    // neighbour that has moved already. It is meant: the move back does the same.
    void MovePixel(std::int32_t x, std::int32_t y, double fy, const unsigned char* upper,
                   const unsigned char* lower) const {
        const double px = x + dx;
        const auto ix = static_cast<std::int32_t>(px);
        const double fx = px - ix;
        const auto left = static_cast<std::ptrdiff_t>(ix) * image.Stride();
        const std::ptrdiff_t right = ix == image.width - 1 ? left : left + image.Stride();
        unsigned char* out = image.Pixel(x, y);
        for (int i = 0; i < kChannels; ++i) {
            const double value = (1.0 - fx) * (1.0 - fy) * LoadChannel<float>(upper + left, i) +
                                 fx * (1.0 - fy) * LoadChannel<float>(upper + right, i) +
                                 (1.0 - fx) * fy * LoadChannel<float>(lower + left, i) +
                                 fx * fy * LoadChannel<float>(lower + right, i);
            StoreChannel(out, i, static_cast<float>(value));
        }
    }

    // Rows for each band, the neighbour's and a copy of the one in hand, or those of MovedRows; and
    // the columns.
    bool AllocateScratch() {
        const auto row = static_cast<std::uint64_t>(image.row_bytes);
        scratch_ = this->template Allocate<unsigned char>(ShiftColumns::Bytes(image.width) +
                                                          kRowsOfBand * row *
                                                              static_cast<std::uint64_t>(bands_));
        if (scratch_ == nullptr) {
            return false;
        }
        columns_.Fill(scratch_, image.width, dx);
        rows_ = scratch_ + ShiftColumns::Bytes(image.width);
        return true;
    }

    std::int32_t RenderBands() {
        const auto count = static_cast<std::uint32_t>(bands_);
        for (std::uint32_t i = 0; i < count && !source; ++i) {
            const RowBand band = BandOf(image.height, i, count);
            const std::int32_t neighbor = dy >= 0.0 ? band.end : band.first - 1;
            if (neighbor >= 0 && neighbor < image.height) {
                std::memcpy(Scratch(i, 0), image.Row(neighbor), RowBytes());
            }
        }
        return host_->Iterate(bands_, [this](unsigned index, unsigned iterations, unsigned) {
            return static_cast<unsigned>(MoveBand(index, iterations));
        });
    }

    std::size_t RowBytes() const { return static_cast<std::size_t>(image.row_bytes); }

    unsigned char* Scratch(std::uint32_t band, std::uint32_t which) const {
        return rows_ + (static_cast<std::size_t>(band) * kRowsOfBand + which) * RowBytes();
    }

    std::int32_t MoveBand(std::uint32_t index, std::uint32_t bands) {
        std::int32_t status = host_->StatusOk();
        const RowBand band = BandOf(image.height, index, bands);
        MovedRows rows;
        if (source) {
            rows.SetUp(Scratch(index, 0), Shift(), columns_.Get(), *kernels_, source);
        }
        for (std::int32_t step = 0; step < band.end - band.first && IsOk(status); ++step) {
            const std::int32_t y = dy >= 0.0 ? band.first + step : band.end - 1 - step;
            if (source) {
                rows.Fill(y, 0, image.width, reinterpret_cast<float*>(image.Row(y)));
            } else {
                MoveRowOfImage(index, band, y);
            }
            status = ReportRow();
        }
        return status;
    }

    // The row in hand is read from a copy; a neighbour beyond the band from what was set aside.
    void MoveRowOfImage(std::uint32_t index, const RowBand& band, std::int32_t y) const {
        unsigned char* copy = Scratch(index, 1);
        std::memcpy(copy, image.Row(y), RowBytes());
        const auto rowAt = [&](std::int32_t row) {
            const bool isBeside = row < band.first || row >= band.end;
            return reinterpret_cast<const float*>(row == y   ? copy
                                                  : isBeside ? Scratch(index, 0)
                                                             : image.Row(row));
        };
        const double py = y + dy;
        const auto iy = static_cast<std::int32_t>(py);
        const float* upper = rowAt(iy);
        const float* lower = rowAt(iy == image.height - 1 ? iy : iy + 1);
        auto* out = reinterpret_cast<float*>(image.Row(y));
        const bool isExtrapolated = dx < 0.0;
        const auto shift = kernels_->shiftToFloat[kChannels];
        shift(out, upper, lower, columns_.Get(), py - iy, isExtrapolated ? 1 : 0, image.width);
        if (isExtrapolated) {
            // The first column looks at its neighbour as moved.
            if (image.width > 1) {
                std::memcpy(copy + image.Stride(), image.Pixel(1, y),
                            static_cast<std::size_t>(image.Stride()));
            }
            shift(out, upper, lower, columns_.Get(), py - iy, 0, 1);
        }
    }

    const RowKernels* kernels_ = nullptr;
    unsigned char* scratch_ = nullptr;
    unsigned char* rows_ = nullptr;
    std::int32_t bands_ = 1;
    ShiftColumns columns_;
    std::atomic<std::uint32_t> rowsDone_{0};
    std::uint32_t position_ = 0;
    std::uint32_t range_ = 1;
};

}  // namespace mv
