#include "effect/SideZone.h"

#include <cmath>

namespace mv {
namespace {

// A ray touches pixels less than 2 away from its line: it may enter up to one pixel beside it,
// and each place on it touches the two pixels around.
constexpr double kReach = 2.5;

}  // namespace

SideZone::Cone SideZone::ConeOf(const RayField& field, std::uint32_t side) {
    const auto toward = [&](std::int32_t k) {
        const PixelPosition end = EndPixel(field, side, k);
        return Direction{static_cast<std::int64_t>(end.x) - field.centerX,
                         static_cast<std::int64_t>(end.y) - field.centerY};
    };
    return {toward(1), toward(RayCount(field, side))};
}

SideZone::SideZone(const RayField& field, std::uint32_t side) {
    for (std::uint32_t earlier = 0; earlier < side && !isEmpty_; ++earlier) {
        if (IsSideLit(field, earlier) && RayCount(field, earlier) > 0) {
            isEmpty_ = !Separate(field, side, earlier);
        }
    }
}

// Looks for a line through the centre with the earlier side's rays on one side of it and this
// side's on the other; of several, the one that lies farthest from this side's rays.
bool SideZone::Separate(const RayField& field, std::uint32_t side, std::uint32_t earlier) {
    static constexpr Direction kFacing[kSideCount] = {{0, -1}, {1, 0}, {0, 1}, {-1, 0}};
    const Cone own = ConeOf(field, side);
    const Cone other = ConeOf(field, earlier);
    const auto dot = [](Direction a, Direction b) { return a.x * b.x + a.y * b.y; };
    const auto length = [&](Direction a) {
        return std::hypot(static_cast<double>(a.x), static_cast<double>(a.y));
    };
    const Direction facing = kFacing[side];
    const Direction away = kFacing[earlier];
    const Direction candidates[] = {facing,
                                    {-away.x, -away.y},
                                    {-other.first.y, other.first.x},
                                    {other.first.y, -other.first.x},
                                    {-other.last.y, other.last.x},
                                    {other.last.y, -other.last.x},
                                    {-own.first.y, own.first.x},
                                    {own.first.y, -own.first.x},
                                    {-own.last.y, own.last.x},
                                    {own.last.y, -own.last.x},
                                    own.first,
                                    own.last};
    double best = 0.0;
    Direction normal{0, 0};
    for (const Direction& n : candidates) {
        if (dot(n, other.first) > 0 || dot(n, other.last) > 0 || dot(n, own.first) < 0 ||
            dot(n, own.last) < 0 || (n.x == 0 && n.y == 0)) {
            continue;
        }
        const double score = (static_cast<double>(dot(n, own.first)) / (length(own.first) + 1.0) +
                              static_cast<double>(dot(n, own.last)) / (length(own.last) + 1.0)) /
                             length(n);
        if (score > best) {
            best = score;
            normal = n;
        }
    }
    if (!(best > 0.0)) {
        return false;
    }
    const double size = length(normal);
    planes_[count_++] = {normal.x,
                         normal.y,
                         field.centerX,
                         field.centerY,
                         static_cast<std::int64_t>(std::ceil(kReach * size)),
                         size};
    return true;
}

std::int32_t SideZone::SafeStep(const Ray& ray) const {
    if (isEmpty_) {
        return ray.steps;
    }
    double safe = 0.0;
    for (int i = 0; i < count_; ++i) {
        const HalfPlane& plane = planes_[i];
        const double startX = ray.isXMajor ? ray.start : ray.minor;
        const double startY = ray.isXMajor ? ray.minor : ray.start;
        const double stepX = ray.isXMajor ? ray.sign : ray.slope;
        const double stepY = ray.isXMajor ? ray.slope : ray.sign;
        const auto nx = static_cast<double>(plane.nx);
        const auto ny = static_cast<double>(plane.ny);
        const double at = nx * (startX - static_cast<double>(plane.centerX)) +
                          ny * (startY - static_cast<double>(plane.centerY));
        const double gain = nx * stepX + ny * stepY;
        // Touched pixels lie up to a pixel from the place on the ray.
        const double missing = static_cast<double>(plane.threshold) + 1.5 * plane.length - at;
        if (missing > 0.0) {
            if (!(gain > 0.0)) {
                return ray.steps;
            }
            safe = std::fmax(safe, std::ceil(missing / gain) + 1.0);
        } else if (gain < 0.0) {
            return ray.steps;
        }
    }
    return safe < ray.steps ? static_cast<std::int32_t>(safe) : ray.steps;
}

}  // namespace mv
