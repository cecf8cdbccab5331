// Editors' own radial blurs, run as programs in batch mode.
#pragma once

#include <filesystem>
#include <opencv2/core.hpp>

namespace mv::benchmarks {

// Blurs the PNG of that path and gives the seconds that the blur itself took, by the editor's own
// clock, without start, reading and writing; below 0 when that failed. Leaves the result where
// that is asked for.

// GIMP: the motion blur plug-in's zoom, through Script-Fu.
double GimpZoomBlur(const std::filesystem::path& picture, double strength,
                    const std::filesystem::path& result);

// G'MIC: blur_radial.
double GmicRadialBlur(const std::filesystem::path& picture, double strength,
                      const std::filesystem::path& result);

}  // namespace mv::benchmarks
