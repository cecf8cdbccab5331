#include "HostImage.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "hostapi/HostApi.h"

namespace mv::host {
namespace {

template <class Sample>
double Load(const std::uint8_t* address) {
    Sample value;
    std::memcpy(&value, address, sizeof value);
    return static_cast<double>(value);
}

template <class Sample>
void Store(std::uint8_t* address, Sample value) {
    std::memcpy(address, &value, sizeof value);
}

double RoundedTo(double value, double largest) {
    return std::isnan(value) ? 0.0 : std::clamp(std::floor(value + 0.5), 0.0, largest);
}

std::int16_t ModeOf(int colours, int depth) {
    switch (depth) {
        case 16:
            return colours == 1 ? hostapi::plugInModeGray16 : hostapi::plugInModeRGB48;
        case 32:
            return colours == 1 ? hostapi::plugInModeGray32 : hostapi::plugInModeRGB96;
        default:
            return colours == 1 ? hostapi::plugInModeGrayScale : hostapi::plugInModeRGBColor;
    }
}

}  // namespace

HostImage::HostImage(int imageWidth, int imageHeight, int imagePlanes, int imageDepth)
    : width(imageWidth), height(imageHeight), planes(imagePlanes), depth(imageDepth) {
    bytes.resize(RowBytes() * static_cast<std::size_t>(height));
}

std::size_t HostImage::Offset(int x, int y, int plane) const {
    return static_cast<std::size_t>(y) * RowBytes() + static_cast<std::size_t>(x) * PixelBytes() +
           static_cast<std::size_t>(plane) * SampleBytes();
}

double HostImage::Get(int x, int y, int plane) const {
    const std::uint8_t* const address = bytes.data() + Offset(x, y, plane);
    switch (depth) {
        case 16:
            return Load<std::uint16_t>(address);
        case 32:
            return Load<float>(address);
        default:
            return *address;
    }
}

void HostImage::Set(int x, int y, int plane, double value) {
    std::uint8_t* const address = bytes.data() + Offset(x, y, plane);
    switch (depth) {
        case 16:
            Store(address, static_cast<std::uint16_t>(RoundedTo(value, 65535.0)));
            break;
        case 32:
            Store(address, static_cast<float>(value));
            break;
        default:
            Store(address, static_cast<std::uint8_t>(RoundedTo(value, 255.0)));
            break;
    }
}

HostDocument MakeDocument(HostImage image, bool alpha, std::vector<std::uint8_t> mask) {
    HostDocument document;
    const int colours = image.planes - (alpha ? 1 : 0);
    const bool selection = !mask.empty();
    document.imageMode = ModeOf(colours, image.depth);
    document.depthStated = image.depth;
    document.planesStated = static_cast<std::int16_t>(image.planes);
    document.layerPlanes = static_cast<std::int16_t>(alpha ? colours : 0);
    document.transparencyMask = alpha ? 1 : 0;
    document.nonLayerPlanes = static_cast<std::int16_t>(alpha ? 0 : colours);
    if (alpha) {
        document.filterCase = selection ? hostapi::filterCaseEditableTransparencyWithSelection
                                        : hostapi::filterCaseEditableTransparencyNoSelection;
    } else {
        document.filterCase = selection ? hostapi::filterCaseFlatImageWithSelection
                                        : hostapi::filterCaseFlatImageNoSelection;
    }
    document.image = std::move(image);
    document.mask = std::move(mask);
    return document;
}

HostDocument MakeMultichannelDocument(HostImage image, std::vector<std::uint8_t> mask) {
    HostDocument document = MakeDocument(std::move(image), false, std::move(mask));
    document.imageMode = document.image.depth == 16 ? hostapi::plugInModeDeepMultichannel
                                                    : hostapi::plugInModeMultichannel;
    return document;
}

}  // namespace mv::host
