// The picture of one render as it passes through the blur in pieces.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

#include "effect/Composer.h"
#include "effect/MovedRows.h"
#include "effect/PictureStream.h"
#include "effect/RayGeometry.h"
#include "effect/ShiftColumns.h"

namespace mv {

// Selects, decodes and moves what the blur reads, and composes what it writes. Immutable but for
// the rows that each side of the blur holds for itself; the memory is the caller's.
template <class C_Image, class Selection>
class StreamedPicture final : public PictureStream {
public:
    static std::uint64_t Bytes(const ShiftedPicture& picture) {
        return ShiftColumns::Bytes(picture.width) + kSideCount * MovedRows::Bytes(picture);
    }

    // report gives the host's status behind each row that is done.
    StreamedPicture(void* memory, const ShiftedPicture& picture, const Selection& selection,
                    const Composer<C_Image>& composer,
                    std::function<std::int32_t(std::int32_t)> report)
        : composer_(composer), report_(std::move(report)), isSlow_(!selection.IsLookedUp()) {
        auto* bytes = static_cast<unsigned char*>(memory);
        columns_.Fill(bytes, picture.width, picture.dx);
        bytes += ShiftColumns::Bytes(picture.width);
        source_ = [&selection](std::int32_t y, std::int32_t from, std::int32_t end, float* out) {
            selection.RenderRun(y, from, end, reinterpret_cast<unsigned char*>(out));
        };
        for (MovedRows& rows : moved_) {
            rows.SetUp(bytes, picture, columns_.Get(), *SelectRowKernels(), source_);
            bytes += MovedRows::Bytes(picture);
        }
    }

    StreamedPicture(const StreamedPicture&) = delete;
    StreamedPicture& operator=(const StreamedPicture&) = delete;

    void Read(std::uint32_t side, std::int32_t y, std::int32_t from, std::int32_t end,
              float* out) override {
        moved_[side].Fill(y, from, end, out);
    }

    void ExpectRead(std::int32_t y, std::int32_t from, std::int32_t end) const override {
        Prefetch(composer_.imageIn, y, from, end);
    }

    void ExpectWrite(std::int32_t y, std::int32_t from, std::int32_t end) const override {
        Prefetch(composer_.imageOut, y, from, end);
    }

    void Write(std::int32_t y, std::int32_t from, std::int32_t end,
               const BlurredRows& rows) override {
        composer_.ComposeRun(y, from, end, [&rows](std::int32_t row) { return rows.Row(row); });
    }

    // Float pictures, which are never looked up, also take their time to be composed.
    bool IsSlow() const override { return isSlow_; }

    std::int32_t EndRow(std::int32_t y) override { return report_(y); }

private:
    static void Prefetch(const C_Image& image, std::int32_t y, std::int32_t from,
                         std::int32_t end) {
        constexpr std::ptrdiff_t kCacheLine = 64;
        const auto* first = reinterpret_cast<const char*>(image.Pixel(from, y));
        const auto* last = reinterpret_cast<const char*>(image.Pixel(end - 1, y));
        for (; first < last; first += kCacheLine) {
            _mm_prefetch(first, _MM_HINT_T0);
        }
        _mm_prefetch(last, _MM_HINT_T0);
    }

    const Composer<C_Image>& composer_;
    std::function<std::int32_t(std::int32_t)> report_;
    bool isSlow_;
    MovedRows::Source source_;
    ShiftColumns columns_;
    MovedRows moved_[kSideCount];
};

}  // namespace mv
