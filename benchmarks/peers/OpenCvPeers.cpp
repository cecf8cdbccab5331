#include "OpenCvPeers.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace mv::benchmarks {
namespace {

constexpr double kGamma = 2.2;
constexpr int kToneEntries = 65536;

cv::Mat ToLinear(const cv::Mat& picture) {
    cv::Mat table(1, 256, CV_32F);
    for (int i = 0; i < 256; ++i) {
        table.at<float>(i) = static_cast<float>(std::pow(i / 255.0, kGamma));
    }
    cv::Mat linear;
    cv::LUT(picture, table, linear);
    return linear;
}

cv::Mat FromLinear(const cv::Mat& linear) {
    static const std::vector<uchar> table = [] {
        std::vector<uchar> entries(kToneEntries);
        for (int i = 0; i < kToneEntries; ++i) {
            const double value = std::pow(i / (kToneEntries - 1.0), 1.0 / kGamma);
            entries[static_cast<std::size_t>(i)] = static_cast<uchar>(std::lround(255.0 * value));
        }
        return entries;
    }();
    cv::Mat picture(linear.size(), CV_8UC3);
    cv::parallel_for_(cv::Range(0, linear.rows), [&](const cv::Range& rows) {
        for (int y = rows.start; y < rows.end; ++y) {
            const float* from = linear.ptr<float>(y);
            uchar* to = picture.ptr<uchar>(y);
            for (int i = 0; i < 3 * linear.cols; ++i) {
                const int index = static_cast<int>(from[i] * (kToneEntries - 1));
                to[i] = table[static_cast<std::size_t>(std::clamp(index, 0, kToneEntries - 1))];
            }
        }
    });
    return picture;
}

// The mean over a window of each row, as long as a share of the distance to the row's start.
void BlurRays(cv::Mat& polar, double strength) {
    cv::parallel_for_(cv::Range(0, polar.rows), [&](const cv::Range& rows) {
        std::vector<cv::Vec3f> sums(static_cast<std::size_t>(polar.cols) + 1);
        for (int y = rows.start; y < rows.end; ++y) {
            auto* ray = polar.ptr<cv::Vec3f>(y);
            for (int i = 0; i < polar.cols; ++i) {
                sums[static_cast<std::size_t>(i) + 1] = sums[static_cast<std::size_t>(i)] + ray[i];
            }
            for (int i = 0; i < polar.cols; ++i) {
                const int half = static_cast<int>(0.5 * strength * i);
                const int first = std::max(i - half, 0);
                const int end = std::min(i + half + 1, polar.cols);
                ray[i] =
                    (sums[static_cast<std::size_t>(end)] - sums[static_cast<std::size_t>(first)]) *
                    (1.0f / static_cast<float>(end - first));
            }
        }
    });
}

template <class Average>
cv::Mat ZoomAndAverage(cv::Mat image, double strength, Average average) {
    const cv::Point2d center(0.5 * image.cols, 0.5 * image.rows);
    const double reach = strength * std::hypot(center.x, center.y);
    const int passes = std::max(1, static_cast<int>(std::ceil(std::log2(std::max(reach, 2.0)))));
    double scale = 1.0 + strength;
    for (int i = 0; i < passes; ++i) {
        scale = std::sqrt(scale);
    }
    cv::Mat zoomed;
    for (int i = 0; i < passes; ++i, scale *= scale) {
        cv::warpAffine(image, zoomed, cv::getRotationMatrix2D(center, 0.0, scale), image.size(),
                       cv::INTER_LINEAR, cv::BORDER_REPLICATE);
        average(image, zoomed);
    }
    return image;
}

}  // namespace

cv::Mat PolarBlur(const cv::Mat& picture, double strength) {
    const cv::Mat linear = ToLinear(picture);
    const cv::Point2f center(0.5f * static_cast<float>(picture.cols),
                             0.5f * static_cast<float>(picture.rows));
    const double radius = std::hypot(center.x, center.y);
    // As many rays as there are pixels on the border.
    const cv::Size size(static_cast<int>(std::ceil(radius)), 2 * (picture.cols + picture.rows));
    cv::Mat polar;
    cv::warpPolar(linear, polar, size, center, radius, cv::INTER_LINEAR | cv::WARP_FILL_OUTLIERS);
    BlurRays(polar, strength);
    cv::Mat blurred;
    cv::warpPolar(polar, blurred, picture.size(), center, radius,
                  cv::INTER_LINEAR | cv::WARP_FILL_OUTLIERS | cv::WARP_INVERSE_MAP);
    return FromLinear(blurred);
}

cv::Mat ZoomBlurFloat(const cv::Mat& picture, double strength) {
    return FromLinear(
        ZoomAndAverage(ToLinear(picture), strength, [](cv::Mat& image, const cv::Mat& zoomed) {
            cv::addWeighted(image, 0.5, zoomed, 0.5, 0.0, image);
        }));
}

cv::Mat ZoomBlurBytes(const cv::Mat& picture, double strength) {
    return ZoomAndAverage(picture.clone(), strength, [](cv::Mat& image, const cv::Mat& zoomed) {
        cv::addWeighted(image, 0.5, zoomed, 0.5, 0.0, image);
    });
}

}  // namespace mv::benchmarks
