#pragma once

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>

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

public:
    using MorvenhaleFilter::MorvenhaleFilter;
    ~MoveSubPixelImageFilter() override { host_->FreeMemory(scratch_); }

    Image image;
    double dx = 0.0;
    double dy = 0.0;
    // Puts a row of the picture as it was to memory of a row's size, from any thread. With it image
    // is only written, and need not hold the picture; see CanTakeRows.
    std::function<void(std::int32_t, unsigned char*)> source;

    // Whether render will ask the source, once dx and dy are set; else it needs the picture in
    // image, and no source. Gets the memory for it.
    bool CanTakeRows() {
        kernels_ = SelectRowKernels();
        bands_ = host_->GetThreadCount(image.height / 2);
        return (dx != 0.0 || dy != 0.0) && kernels_ != nullptr && image.height >= 2 * bands_ &&
               AllocateScratch();
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
        if (scratch_ == nullptr && !CanTakeRows()) {
            return RenderPlain();
        }
        const std::int32_t status = RenderBands();
        host_->FreeMemory(scratch_);
        scratch_ = nullptr;
        return status;
    }

private:
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

    // Two rows for each band, the neighbour's and a copy of the one in hand, or two of the source;
    // and the columns.
    bool AllocateScratch() {
        const auto row = static_cast<std::uint64_t>(image.row_bytes);
        scratch_ = this->template Allocate<unsigned char>(
            ShiftColumns::Bytes(image.width) + 2 * row * static_cast<std::uint64_t>(bands_));
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
        return rows_ + (static_cast<std::size_t>(band) * 2 + which) * RowBytes();
    }

    std::int32_t MoveBand(std::uint32_t index, std::uint32_t bands) {
        std::int32_t status = host_->StatusOk();
        const RowBand band = BandOf(image.height, index, bands);
        std::int32_t held[2] = {-1, -1};
        for (std::int32_t step = 0; step < band.end - band.first && IsOk(status); ++step) {
            const std::int32_t y = dy >= 0.0 ? band.first + step : band.end - 1 - step;
            if (source) {
                MoveRowOfSource(index, held, y);
            } else {
                MoveRowOfImage(index, band, y);
            }
            status = ReportRow();
        }
        return status;
    }

    // held: which rows of the source the band's two rows of scratch hold.
    void MoveRowOfSource(std::uint32_t index, std::int32_t* held, std::int32_t y) const {
        const auto fetch = [&](std::int32_t row) {
            const std::uint32_t which = static_cast<std::uint32_t>(row) & 1;
            if (held[which] != row) {
                source(row, Scratch(index, which));
                held[which] = row;
            }
            return Scratch(index, which);
        };
        unsigned char* own = fetch(y);
        MoveRowFrom(own, y, [&](std::int32_t row) -> const unsigned char* {
            // The first row looks at its neighbour as moved.
            return dy < 0.0 && row > y ? image.Row(row) : fetch(row);
        });
    }

    // The row in hand is read from a copy; a neighbour beyond the band from what was set aside.
    void MoveRowOfImage(std::uint32_t index, const RowBand& band, std::int32_t y) const {
        unsigned char* copy = Scratch(index, 1);
        std::memcpy(copy, image.Row(y), RowBytes());
        MoveRowFrom(copy, y, [&](std::int32_t row) -> const unsigned char* {
            if (row == y) {
                return copy;
            }
            const bool isBeside = row < band.first || row >= band.end;
            return isBeside ? Scratch(index, 0) : image.Row(row);
        });
    }

    // own is row y as it was, which is changed; rowAt gives it and its neighbour.
    template <class RowAt>
    void MoveRowFrom(unsigned char* own, std::int32_t y, RowAt rowAt) const {
        const double py = y + dy;
        const auto iy = static_cast<std::int32_t>(py);
        const std::int32_t below = iy == image.height - 1 ? iy : iy + 1;
        const auto* upper = reinterpret_cast<const float*>(rowAt(iy));
        const auto* lower = reinterpret_cast<const float*>(rowAt(below));
        auto* out = reinterpret_cast<float*>(image.Row(y));
        const bool isExtrapolated = dx < 0.0;
        const auto shift = kernels_->shiftToFloat[kChannels];
        shift(out, upper, lower, columns_.Get(), py - iy, isExtrapolated ? 1 : 0, image.width);
        if (isExtrapolated) {
            // The first column looks at its neighbour as moved.
            if (image.width > 1) {
                std::memcpy(own + image.Stride(), image.Pixel(1, y),
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
