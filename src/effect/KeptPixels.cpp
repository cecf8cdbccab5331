#include "effect/KeptPixels.h"

namespace mv {
namespace {

// The kept pixels around a run.
class KeptRows final : public BlurredRows {
public:
    KeptRows(const KeptPixels& pixels, std::int32_t x, std::ptrdiff_t channels)
        : pixels_(&pixels), x_(x), channels_(channels) {}

    const float* Row(std::int32_t y) const override { return pixels_->At(x_, y) - x_ * channels_; }

private:
    const KeptPixels* pixels_;
    std::int32_t x_;
    std::ptrdiff_t channels_;
};

}  // namespace

void KeptPixels::Fill(void* memory, std::int32_t width, std::int32_t height,
                      const SideSectors* sides) {
    SideSectors narrowed[kSideCount];
    auto* bytes = static_cast<unsigned char*>(memory);
    for (std::uint32_t side = 0; side < kSideCount; ++side) {
        narrowed[side] = sides[side].Narrowed(kAloneMargin);
    }
    kept_.Fill(bytes, width, height, narrowed);
    for (std::uint32_t side = 0; side < kSideCount; ++side) {
        narrowed[side] = sides[side].Narrowed(kWrittenMargin);
    }
    unwritten_.Fill(bytes + SeamMap::Bytes(height), width, height, narrowed);
}

void KeptPixels::WriteRow(PictureStream& stream, std::int32_t y) const {
    const SeamMap::Run* runs = unwritten_.RowRuns(y);
    for (const SeamMap::Run* run = runs; !SeamMap::IsLast(runs, run); ++run) {
        stream.Write(y, run->first, run->end, KeptRows(*this, run->first, channels_));
    }
}

}  // namespace mv
