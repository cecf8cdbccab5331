#include "effect/RaySector.h"

#include <algorithm>
#include <cmath>

namespace mv {
namespace {

// A ray touches pixels less than 2.5 away from its line, and so do the neighbour's.
constexpr double kMargin = 3.0;

std::int64_t DivideUp(std::int64_t a, std::int64_t b) {
    const std::int64_t quotient = a / b;
    return quotient + ((a % b != 0 && (a > 0) == (b > 0)) ? 1 : 0);
}

std::int64_t DivideDown(std::int64_t a, std::int64_t b) {
    return -DivideUp(-a, b);
}

std::int32_t Clamped(std::int64_t value, std::int32_t size) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, 0, size));
}

}  // namespace

RaySector::RaySector(const RayField& field, std::uint32_t side, std::int32_t first,
                     std::int32_t last, const SideZone& zone)
    : field_(field), firstRay_(first), lastRay_(last) {
    const Ray ray = MakeRay(field, EndPixel(field, side, first));
    isXMajor_ = ray.isXMajor;
    sign_ = ray.sign;
    const PixelPosition from = EndPixel(field, side, first);
    const PixelPosition to = EndPixel(field, side, last);
    const std::int64_t fromX = static_cast<std::int64_t>(from.x) - field.centerX;
    const std::int64_t fromY = static_cast<std::int64_t>(from.y) - field.centerY;
    const std::int64_t toX = static_cast<std::int64_t>(to.x) - field.centerX;
    const std::int64_t toY = static_cast<std::int64_t>(to.y) - field.centerY;
    isBare_ = zone.IsEmpty() || (fromX == 0 && fromY == 0) || (toX == 0 && toY == 0);
    // Rays follow each other clockwise: right of the first ray and left of the last.
    edges_[0] = {-fromY, fromX, 0};
    edges_[1] = {toY, -toX, 0};
    *this = Narrowed(kMargin);
}

RaySector RaySector::Narrowed(double margin) const {
    RaySector narrowed = *this;
    for (Edge& edge : narrowed.edges_) {
        const double length =
            std::hypot(static_cast<double>(edge.nx), static_cast<double>(edge.ny));
        edge.threshold = static_cast<std::int64_t>(std::ceil(margin * length));
    }
    return narrowed;
}

PixelRange RaySector::Own(std::int32_t lane, bool isRow) const {
    const std::int32_t size = isRow ? field_.width : field_.height;
    if (isBare_) {
        return {0, 0};
    }
    PixelRange range{0, size};
    for (const Edge& edge : edges_) {
        const std::int64_t gain = isRow ? edge.nx : edge.ny;
        const std::int64_t fixed = isRow ? edge.ny : edge.nx;
        const std::int64_t center = isRow ? field_.centerX : field_.centerY;
        const std::int64_t beside = lane - std::int64_t{isRow ? field_.centerY : field_.centerX};
        const std::int64_t missing = edge.threshold - fixed * beside;
        if (gain > 0) {
            range.first = std::max(range.first, Clamped(DivideUp(missing, gain) + center, size));
        } else if (gain < 0) {
            range.end = std::min(range.end, Clamped(DivideDown(missing, gain) + center + 1, size));
        } else if (missing > 0) {
            return {0, 0};
        }
    }
    return range.IsEmpty() ? PixelRange{0, 0} : range;
}

SideSectors SideSectors::Narrowed(double margin) const {
    SideSectors narrowed = *this;
    for (int i = 0; i < count; ++i) {
        narrowed.sectors[i] = sectors[i].Narrowed(margin);
    }
    return narrowed;
}

SideSectors::SideSectors(const RayField& field, std::uint32_t side, const SideZone& zone) {
    if (!IsSideLit(field, side)) {
        return;
    }
    const std::int32_t rays = RayCount(field, side);
    std::int32_t first = 1;
    bool isXMajor = false;
    std::int32_t sign = 0;
    for (std::int32_t k = 1; k <= rays + 1; ++k) {
        if (k <= rays) {
            const Ray ray = MakeRay(field, EndPixel(field, side, k));
            if (k > 1 && ray.isXMajor == isXMajor && ray.sign == sign) {
                continue;
            }
            isXMajor = ray.isXMajor;
            sign = ray.sign;
        }
        if (k > first && count < kMost) {
            sectors[count++] = RaySector(field, side, first, k - 1, zone);
            first = k;
        }
    }
}

}  // namespace mv
