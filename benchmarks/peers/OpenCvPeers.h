// What a programmer with OpenCV at hand would write instead: three radial blurs.
#pragma once

#include <opencv2/core.hpp>

namespace mv::benchmarks {

// All take 8-bit RGB of any size and blur it from its centre; strength is the length of the blur as
// a share of the distance to the centre, which lies in its middle. Gamma 2.2.

// To polar coordinates in linear light, a running sum along each ray with two look-ups a pixel,
// and back.
cv::Mat PolarBlur(const cv::Mat& picture, double strength);

// Zoomed and averaged with itself, the zoom doubling each time, until the steps are a pixel wide:
// in linear-light float, and in the bytes as they are.
cv::Mat ZoomBlurFloat(const cv::Mat& picture, double strength);
cv::Mat ZoomBlurBytes(const cv::Mat& picture, double strength);

}  // namespace mv::benchmarks
