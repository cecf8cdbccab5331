#include "effect/SectorWindow.h"

#include <algorithm>
#include <cmath>

namespace mv {
namespace {

// Keeps lanes apart whose pixels would fall into the same lines of a cache.
constexpr std::int32_t kPadding = 16;

// A ray touches a place and the next one, less than two places away from its line's and the next
// one. What is written has blurred neighbours.
constexpr std::int32_t kReadAhead = 5;
constexpr std::int32_t kCloseBehind = 3;
constexpr std::int32_t kWriteBehind = kCloseBehind + 3;

// A run with a neighbour to both sides, in each of three rows.
constexpr std::ptrdiff_t kCopyPixels = SectorWindow::kPixels + 2;

// How far ahead of a run memory is asked for another one.
constexpr std::int32_t kLanesAhead = 4;

constexpr std::int32_t kMask = SectorWindow::kPixels - 1;

PixelRange Common(const PixelRange& a, const PixelRange& b) {
    return {std::max(a.first, b.first), std::min(a.end, b.end)};
}

std::uint64_t Count(std::int32_t number) {
    return static_cast<std::uint64_t>(number);
}

}  // namespace

std::int32_t SectorWindow::UsedLanes(const RayField& field, const RaySector& sector) {
    const std::int32_t size = sector.IsXMajor() ? field.width : field.height;
    const std::int32_t center =
        std::clamp(sector.IsXMajor() ? field.centerX : field.centerY, 0, size - 1);
    return sector.Sign() > 0 ? size - center : center + 1;
}

std::uint64_t SectorWindow::RingFloats(const RayField& field, const RaySector& sector,
                                       int channels) {
    const std::uint64_t lanes = Count(UsedLanes(field, sector));
    return sector.IsXMajor() ? Count(kPixels) * (lanes * Count(channels) + kPadding)
                             : lanes * Count(kPixels * channels + kPadding);
}

std::uint64_t SectorWindow::Bytes(const RayField& field, const SideSectors& sectors, int channels) {
    std::uint64_t floats = 0;
    for (int i = 0; i < sectors.count; ++i) {
        floats = std::max(floats, RingFloats(field, sectors.sectors[i], channels));
    }
    floats += 3 * Count(channels) * Count(kCopyPixels);
    const std::uint64_t lanes = Count(std::max(field.width, field.height));
    return floats * sizeof(float) + 3 * lanes * sizeof(std::int32_t) +
           Count(field.height) * sizeof(OwnRow);
}

void SectorWindow::SetUp(void* memory, const RayField& field, int channels, std::uint32_t side,
                         const KeptPixels& kept, PictureStream& stream) {
    field_ = field;
    channels_ = channels;
    side_ = side;
    kept_ = &kept;
    stream_ = &stream;
    const std::int32_t lanes = std::max(field.width, field.height);
    ownRows_ = static_cast<OwnRow*>(memory);
    read_ = reinterpret_cast<std::int32_t*>(ownRows_ + field.height);
    written_ = read_ + lanes;
    next_ = written_ + lanes;
    copies_ = reinterpret_cast<float*>(next_ + lanes);
    ring_ = copies_ + 3 * channels_ * kCopyPixels;
}

LanePixels SectorWindow::Begin(const RaySector& sector, const Ray& first) {
    sector_ = sector;
    const bool isXMajor = sector.IsXMajor();
    const std::int32_t size = isXMajor ? field_.height : field_.width;
    laneCount_ = isXMajor ? field_.width : field_.height;
    const std::int32_t usedLanes = UsedLanes(field_, sector);
    firstLane_ = laneCount_ - usedLanes;
    travel_ = sector.Travel();
    leastPlace_ = travel_ > 0 ? 0 : 1 - size;
    endPlace_ = leastPlace_ + size;
    pixels_.minorMask = kMask;
    pixels_.majorStep = isXMajor ? channels_ : kPixels * channels_ + kPadding;
    pixels_.minorStep = isXMajor ? usedLanes * channels_ + kPadding : channels_;
    const std::int32_t firstMajor = std::min(MajorOf(firstLane_), MajorOf(laneCount_ - 1));
    pixels_.data = ring_ - firstMajor * pixels_.majorStep;
    const RaySector written = sector.Narrowed(KeptPixels::kWrittenMargin);
    const RaySector alone = sector.Narrowed(KeptPixels::kAloneMargin);
    for (std::int32_t y = 0; y < field_.height; ++y) {
        ownRows_[y] = {sector.OwnOfRow(y), written.OwnOfRow(y), alone.OwnOfRow(y)};
    }
    for (std::int32_t lane = firstLane_; lane < laneCount_; ++lane) {
        const std::int32_t place = PlaceOn(first, lane) - kWriteBehind;
        read_[lane] = std::clamp(place, leastPlace_, endPlace_ - 2);
        written_[lane] = read_[lane];
    }
    return pixels_;
}

// The place of the ray's line on a lane, on which also lie those before its start and beyond its
// end; beside the picture some place there. A ray from outside starts in whole steps and keeps less
// than two pixels away from the line.
std::int32_t SectorWindow::PlaceOn(const Ray& ray, std::int32_t lane) const {
    const double centerMajor = ray.isXMajor ? field_.centerX : field_.centerY;
    const double centerMinor = ray.isXMajor ? field_.centerY : field_.centerX;
    const double steps = (MajorOf(lane) - centerMajor) * ray.sign;
    const double minor = std::floor(centerMinor + ray.slope * steps);
    const std::int32_t size = endPlace_ - leastPlace_;
    constexpr double kBeside = 16.0;
    const auto pixel = static_cast<std::int32_t>(std::clamp(minor, -kBeside, size + kBeside));
    return travel_ > 0 ? pixel : -(pixel + 1);
}

// Calls work(y, from, end) for the pixels at the places from[lane] to end[lane] - 1 of all lanes,
// row by row. Rays from one centre: along the lanes each of both grows or falls throughout.
// Runs along lanes are announced to expect, since each is somewhere else in memory.
template <class Work, class Expect>
void SectorWindow::ForEachRun(const std::int32_t* from, const std::int32_t* end, Work work,
                              Expect expect) const {
    if (sector_.IsXMajor()) {
        ForEachColumnRun(from, end, work);
        return;
    }
    const auto visit = [&](std::int32_t lane, auto visitor) {
        if (from[lane] < end[lane]) {
            const std::int32_t first = travel_ > 0 ? from[lane] : 1 - end[lane];
            visitor(MajorOf(lane), first, first + end[lane] - from[lane]);
        }
    };
    for (std::int32_t lane = firstLane_; lane < laneCount_; ++lane) {
        if (lane + kLanesAhead < laneCount_) {
            visit(lane + kLanesAhead, expect);
        }
        visit(lane, work);
    }
}

template <class Work>
void SectorWindow::ForEachColumnRun(const std::int32_t* from, const std::int32_t* end,
                                    Work work) const {
    const std::int32_t last = laneCount_ - 1;
    const bool fromGrows = from[firstLane_] <= from[last];
    const bool endGrows = end[firstLane_] <= end[last];
    const std::int32_t least = std::min(from[firstLane_], from[last]);
    const std::int32_t most = std::max(end[firstLane_], end[last]);
    for (std::int32_t place = least; place < most; ++place) {
        const auto isBegun = [place](std::int32_t value) { return value <= place; };
        const auto isAhead = [place](std::int32_t value) { return value > place; };
        std::int32_t first = firstLane_;
        std::int32_t behind = laneCount_;
        // Lanes that have begun are the first ones where the fronts grow, and else the last.
        const auto lane = [](const std::int32_t* values, const std::int32_t* at) {
            return static_cast<std::int32_t>(at - values);
        };
        if (fromGrows) {
            behind = lane(from, std::partition_point(from + first, from + behind, isBegun));
        } else {
            first = lane(from, std::partition_point(from + first, from + behind, isAhead));
        }
        if (first >= behind) {
            continue;
        }
        if (endGrows) {
            first = lane(end, std::partition_point(end + first, end + behind, isBegun));
        } else {
            behind = lane(end, std::partition_point(end + first, end + behind, isAhead));
        }
        if (first < behind) {
            const std::int32_t column = std::min(MajorOf(first), MajorOf(behind - 1));
            work(travel_ * place, column, column + behind - first);
        }
    }
}

void SectorWindow::ReadTo(const Ray& last) {
    for (std::int32_t lane = firstLane_; lane < laneCount_; ++lane) {
        next_[lane] = std::clamp(PlaceOn(last, lane) + kReadAhead, leastPlace_ + 2, endPlace_);
    }
    ForEachRun(
        read_, next_,
        [this](std::int32_t y, std::int32_t from, std::int32_t end) { ReadRun(y, from, end); },
        [this](std::int32_t y, std::int32_t from, std::int32_t end) {
            stream_->ExpectRead(y, from, end);
        });
    std::swap(read_, next_);
}

// A run along a lane may go over the end of the ring.
void SectorWindow::ReadRun(std::int32_t y, std::int32_t from, std::int32_t end) {
    if (sector_.IsXMajor()) {
        stream_->Read(side_, y, from, end, pixels_.At(from, y));
        return;
    }
    const std::int32_t wrap = std::min((from | kMask) + 1, end);
    stream_->Read(side_, y, from, wrap, pixels_.At(y, from));
    if (wrap < end) {
        stream_->Read(side_, y, wrap, end, pixels_.At(y, wrap));
    }
}

void SectorWindow::WriteBehind(SectorSums& sums, const Ray& ray) {
    for (std::int32_t lane = firstLane_; lane < laneCount_; ++lane) {
        const std::int32_t place = PlaceOn(ray, lane);
        sums.CloseTo(lane, place - kCloseBehind);
        next_[lane] = std::clamp(place - kWriteBehind, leastPlace_, endPlace_);
        sums.ClearUnreached(lane, written_[lane], next_[lane]);
    }
    WriteTo(next_);
    std::swap(written_, next_);
}

void SectorWindow::End(SectorSums& sums) {
    for (std::int32_t lane = firstLane_; lane < laneCount_; ++lane) {
        sums.ClearUnreached(lane, written_[lane], read_[lane]);
    }
    WriteTo(read_);
}

void SectorWindow::WriteTo(const std::int32_t* end) {
    ForEachRun(
        written_, end,
        [this](std::int32_t y, std::int32_t from, std::int32_t behind) {
            WriteRun(y, from, behind);
        },
        [this](std::int32_t y, std::int32_t from, std::int32_t behind) {
            stream_->ExpectWrite(y, from, behind);
        });
}

void SectorWindow::WriteRun(std::int32_t y, std::int32_t from, std::int32_t end) {
    const OwnRow& own = ownRows_[y];
    const PixelRange finished = Common({from, end}, own.finished);
    if (finished.IsEmpty()) {
        return;
    }
    runRow_ = y;
    run_ = finished;
    if (own.alone.IsEmpty()) {
        Keep(y, finished);
    } else {
        Keep(y, Common(finished, {finished.first, own.alone.first}));
        Keep(y, Common(finished, {own.alone.end, finished.end}));
    }
    const PixelRange written = Common(finished, own.written);
    if (!written.IsEmpty()) {
        run_ = written;
        stream_->Write(y, written.first, written.end, *this);
    }
}

void SectorWindow::Keep(std::int32_t y, const PixelRange& run) {
    if (!run.IsEmpty()) {
        std::copy_n(Row(y) + run.first * channels_, (run.end - run.first) * channels_,
                    kept_->At(run.first, y));
    }
}

const float* SectorWindow::Row(std::int32_t y) const {
    return sector_.IsXMajor() ? RowOfRing(y) : CopyOfLane(y);
}

const float* SectorWindow::RowOfRing(std::int32_t y) const {
    return pixels_.At(0, y);
}

// The run and its neighbours, in one piece.
const float* SectorWindow::CopyOfLane(std::int32_t y) const {
    const std::int32_t from = std::max(run_.first - 1, 0);
    const std::int32_t end = std::min(run_.end + 1, field_.width);
    const std::int32_t wrap = (from | kMask) + 1;
    if (end <= wrap) {
        return pixels_.At(y, from) - from * channels_;
    }
    float* copy = copies_ + (y - runRow_ + 1) * channels_ * kCopyPixels;
    const std::ptrdiff_t head = (wrap - from) * channels_;
    std::copy_n(pixels_.At(y, from), head, copy);
    std::copy_n(pixels_.At(y, wrap), (end - wrap) * channels_, copy + head);
    return copy - from * channels_;
}

}  // namespace mv
