#include "effect/SectorSums.h"

#include <algorithm>

namespace mv {

void SectorSums::SetUp(void* memory, const BlurTarget& target, std::uint32_t side) {
    target_ = target;
    side_ = side;
    const std::int32_t most = std::max(target.width, target.height);
    lanes_.lanes = static_cast<SumLane*>(memory);
    lanes_.sums = reinterpret_cast<float*>(lanes_.lanes + most);
    lanes_.owner = this;
    lanes_.open = [](void* owner, std::int32_t lane, std::int32_t pixel) {
        auto* sums = static_cast<SectorSums*>(owner);
        sums->StartLane(lane, sums->PlaceOfPixel(pixel));
    };
    lanes_.exchange = [](void* owner, std::int32_t lane, std::int32_t pixel) {
        auto* sums = static_cast<SectorSums*>(owner);
        sums->Close(lane, pixel);
        sums->Open(lane, pixel + kOpenPixels * sums->lanes_.travel);
    };
}

void SectorSums::Begin(const RaySector& sector, const LanePixels& out) {
    sector_ = sector;
    const bool isXMajor = sector.IsXMajor();
    laneCount_ = isXMajor ? target_.width : target_.height;
    laneSize_ = isXMajor ? target_.height : target_.width;
    lanes_.travel = sector.Travel();
    lanes_.outMinor = out.minorStep;
    lanes_.outMask = out.minorMask;
    lanes_.outStep = sector.Sign() * out.majorStep;
    lanes_.out = out.At(MajorOf(0), 0);
    for (std::int32_t lane = 0; lane < laneCount_; ++lane) {
        const std::int32_t major = MajorOf(lane);
        const PixelRange own = isXMajor ? sector.OwnOfColumn(major) : sector.OwnOfRow(major);
        // As places: both the pixel that is closed and the one that is opened.
        const std::int32_t from = lanes_.travel > 0 ? own.first : 1 - own.end;
        const std::int32_t end = lanes_.travel > 0 ? own.end : 1 - own.first;
        lanes_.lanes[lane] = {kUnopened, from, end - kOpenPixels, 0};
    }
}

void SectorSums::End() {
    for (std::int32_t lane = 0; lane < laneCount_; ++lane) {
        SumLane& state = lanes_.lanes[lane];
        if (state.next != kUnopened) {
            for (std::int32_t i = 0; i < kOpenPixels; ++i, ++state.next) {
                Close(lane, lanes_.travel * state.next);
            }
        }
    }
}

void SectorSums::CloseTo(std::int32_t lane, std::int32_t place) {
    SumLane& state = lanes_.lanes[lane];
    if (state.next == kUnopened) {
        return;
    }
    for (; state.next < place; ++state.next) {
        lanes_.exchange(this, lane, lanes_.travel * state.next);
    }
}

void SectorSums::ClearUnreached(std::int32_t lane, std::int32_t from, std::int32_t end) {
    const SumLane& state = lanes_.lanes[lane];
    from = std::max(from, state.ownFrom);
    end = std::min(end, state.ownEnd + kOpenPixels);
    const auto clear = [&](std::int32_t first, std::int32_t behind) {
        for (std::int32_t place = first; place < behind; ++place) {
            std::fill_n(OutOf(lane, lanes_.travel * place), target_.channels, 0.0f);
        }
    };
    if (state.next == kUnopened) {
        clear(from, end);
        return;
    }
    // Places start to next - 1 were finished.
    clear(from, std::min(state.start, end));
    clear(std::max(state.next, from), end);
}

void SectorSums::StartLane(std::int32_t lane, std::int32_t place) {
    SumLane& state = lanes_.lanes[lane];
    state.start = place - 2;
    state.next = state.start;
    for (std::int32_t i = 0; i < kOpenPixels; ++i) {
        Open(lane, lanes_.travel * (state.next + i));
    }
}

void SectorSums::Pass(std::int32_t lane, std::int32_t pixel) {
    const std::int32_t place = PlaceOfPixel(pixel);
    if (lanes_.lanes[lane].next == kUnopened) {
        StartLane(lane, place);
    }
    CloseTo(lane, place - 1);
}

// What an earlier side reaches takes nothing directly unless that side is done, and what lies in
// the zone of a later one no ray of this side touches: that side may be at it just now.
bool SectorSums::IsOfSide(std::int32_t x, std::int32_t y) const {
    for (std::uint32_t later = side_ + 1; later < kSideCount; ++later) {
        if (target_.sectors[later].count > 0 && target_.zones[later].Contains(x, y)) {
            return false;
        }
    }
    return target_.areLate[side_] || target_.zones[side_].Contains(x, y);
}

// Null for pixels beside the picture, for the sector's own, and for those of other sides.
float* SectorSums::SeamSumsOf(std::int32_t lane, std::int32_t pixel) const {
    if (pixel < 0 || pixel >= laneSize_) {
        return nullptr;
    }
    const std::int32_t major = MajorOf(lane);
    const std::int32_t x = sector_.IsXMajor() ? major : pixel;
    const std::int32_t y = sector_.IsXMajor() ? pixel : major;
    std::uint32_t slot = 0;
    if (!IsOfSide(x, y) || !target_.seams->Find(x, y, slot)) {
        return nullptr;
    }
    return target_.seamSums + static_cast<std::size_t>(slot) * static_cast<std::size_t>(Floats());
}

void SectorSums::Open(std::int32_t lane, std::int32_t pixel) {
    float* sums = Sums(lane, pixel);
    const float* seam = SeamSumsOf(lane, pixel);
    if (seam != nullptr) {
        std::copy_n(seam, Floats(), sums);
    } else {
        std::fill_n(sums, Floats(), 0.0f);
    }
}

void SectorSums::Close(std::int32_t lane, std::int32_t pixel) {
    const SumLane& state = lanes_.lanes[lane];
    const std::int32_t place = lanes_.travel * pixel;
    if (place >= state.ownFrom && place < state.ownEnd + kOpenPixels) {
        Finish(lane, pixel);
        return;
    }
    float* seam = SeamSumsOf(lane, pixel);
    if (seam != nullptr) {
        std::copy_n(Sums(lane, pixel), Floats(), seam);
    }
}

void SectorSums::Finish(std::int32_t lane, std::int32_t pixel) {
    const float* sums = Sums(lane, pixel);
    const double weight = sums[target_.channels];
    const double factor = weight != 0.0 ? 1.0 / weight : 0.0;
    float* out = OutOf(lane, pixel);
    for (int c = 0; c < target_.channels; ++c) {
        out[c] = static_cast<float>(sums[c] * factor);
    }
}

}  // namespace mv
