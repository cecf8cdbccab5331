// The chunks of a PNG file beside its pixels, for systems whose own reader and writer pass over
// them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "pictures/Picture.h"

namespace mv::host {

struct PngFacts {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int bits = 0;
    int colorType = 0;       // 0 gray, 2 RGB, 3 palette, 4 gray + alpha, 6 RGB + alpha
    ColorDescription color;  // but for the profile, which is packed
    std::optional<Resolution> resolution;
};

// Reads the chunks in front of the pixels; false when the file does not begin as a PNG does.
bool ReadPngFacts(const std::filesystem::path& path, PngFacts& facts);

// The same PNG file with the profile, the colour chunks and the resolution of the picture, and
// with none that a writer added on its own account.
std::vector<std::uint8_t> DescribePng(const std::vector<std::uint8_t>& png, const Picture& picture);

}  // namespace mv::host
