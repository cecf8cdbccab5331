// The rays of a blur: one from the centre to every border pixel, side by side.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace mv {

constexpr std::uint32_t kSideCount = 4;

struct PixelPosition {
    std::int32_t x;
    std::int32_t y;
};

// Where the rays come from and what they run through; the centre may lie far outside.
struct RayField {
    std::int32_t width;
    std::int32_t height;
    std::int32_t centerX;
    std::int32_t centerY;
};

// Whether the centre is a pixel of the picture.
inline bool HasCenter(const RayField& field) {
    return field.centerX >= 0 && field.centerX < field.width && field.centerY >= 0 &&
           field.centerY < field.height;
}

// One ray, in steps of one pixel along its major axis.
struct Ray {
    bool isXMajor;
    std::int32_t start;  // first whole coordinate on the major axis
    std::int32_t sign;   // +1 or -1, the direction of the steps
    std::int32_t steps;
    double minor;          // first coordinate on the minor axis
    double slope;          // added to the minor coordinate with each step
    double startDistance;  // from the centre to the entry point, in pixels
};

// A side that faces away from the centre has no rays.
inline bool IsSideLit(const RayField& field, std::uint32_t side) {
    switch (side) {
        case 0:
            return field.centerY >= 0;
        case 1:
            return field.centerX < field.width;
        case 2:
            return field.centerY < field.height;
        default:
            return field.centerX >= 0;
    }
}

// The number of rays of a lit side; they count from 1.
inline std::int32_t RayCount(const RayField& field, std::uint32_t side) {
    return (side % 2 == 0 ? field.width : field.height) - 1;
}

// The four sides together reach each border pixel once.
inline PixelPosition EndPixel(const RayField& field, std::uint32_t side, std::int32_t k) {
    switch (side) {
        case 0:
            return {k, 0};
        case 1:
            return {field.width - 1, k};
        case 2:
            return {field.width - k - 1, field.height - 1};
        default:
            return {0, field.height - k - 1};
    }
}

struct RayPoint {
    double x;
    double y;
};

// Where the line from the centre to the end pixel meets the image.
inline RayPoint EntryPoint(const RayField& field, double mx, double my) {
    const std::int64_t ox = field.centerX;
    const std::int64_t oy = field.centerY;
    const std::int64_t ix = ox < 0 ? -ox : ox >= field.width ? field.width - ox - 1 : 0;
    const std::int64_t iy = oy < 0 ? -oy : oy >= field.height ? field.height - oy - 1 : 0;
    const double centerX = static_cast<double>(ox);
    const double centerY = static_cast<double>(oy);
    const RayPoint a{centerX + static_cast<double>(std::abs(iy)) * mx,
                     static_cast<double>(oy + iy)};
    const RayPoint b{static_cast<double>(ox + ix),
                     centerY + static_cast<double>(std::abs(ix)) * my};
    // Truncation toward zero lets a point up to a pixel above or left of the image pass.
    const bool aInside = a.x > -1.0 && a.x < field.width && a.y > -1.0 && a.y < field.height;
    if (!aInside) {
        return b;
    }
    if (b.x >= 0.0 && b.x < field.width && b.y >= 0.0 && b.y < field.height) {
        const double da = std::min(std::fabs(centerY - a.y), std::fabs(centerX - a.x));
        const double db = std::min(std::fabs(centerY - b.y), std::fabs(centerX - b.x));
        return db < da ? b : a;
    }
    return a;
}

inline Ray MakeRay(const RayField& field, PixelPosition end) {
    const double dx = static_cast<double>(end.x) - field.centerX;
    const double dy = static_cast<double>(end.y) - field.centerY;
    // The divisors are absolute values, so the slopes keep the direction.
    const double mx = dy != 0.0 ? dx / std::fabs(dy) : dx;
    const double my = dx != 0.0 ? dy / std::fabs(dx) : dy;
    const RayPoint entry = EntryPoint(field, mx, my);
    const double ex = entry.x - field.centerX;
    const double ey = entry.y - field.centerY;
    Ray ray{};
    ray.startDistance = ex == 0.0 && ey == 0.0 ? 0.0 : std::sqrt(ex * ex + ey * ey);
    ray.isXMajor = std::fabs(dx) > std::fabs(dy);
    const double major = ray.isXMajor ? entry.x : entry.y;
    const std::int32_t size = ray.isXMajor ? field.width : field.height;
    const std::int32_t last = ray.isXMajor ? end.x : end.y;
    ray.sign = (ray.isXMajor ? dx : dy) < 0.0 ? -1 : 1;
    ray.start = std::clamp(static_cast<std::int32_t>(major), 0, size - 1);
    ray.steps = std::max((last - ray.start) * ray.sign + 1, 0);
    ray.minor = ray.isXMajor ? entry.y : entry.x;
    ray.slope = ray.isXMajor ? my : mx;
    return ray;
}

// Repeated addition may put a coordinate just outside: so near to 0 it counts as 0, or pixels of
// the border would be missed.
constexpr double kMinorTolerance = 1e-6;

// The two neighbours of a coordinate on the minor axis and the share t of the second.
struct MinorPlace {
    std::int32_t first;
    std::int32_t second;
    double t;
    bool isInside;
};

inline MinorPlace PlaceOf(double minor, std::int32_t size) {
    if (minor < 0.0 && minor > -kMinorTolerance) {
        minor = 0.0;
    }
    const double floor = std::floor(minor);
    if (!(floor >= 0.0 && floor < size)) {
        const std::int32_t nearest = floor < 0.0 ? 0 : size - 1;
        return {nearest, nearest, 0.0, false};
    }
    const auto first = static_cast<std::int32_t>(floor);
    return {first, first == size - 1 ? first : first + 1, minor - floor, true};
}

}  // namespace mv
