#include "pictures/PictureConversion.h"

#include <cstring>
#include <utility>

#include "pictures/SampleLevels.h"

namespace mv::host {
namespace {

constexpr double kDefaultResolution = 72.0;

template <class Convert>
void ForEachLevel(std::vector<std::uint8_t>& bytes, Convert convert) {
    std::uint16_t level;
    for (std::size_t i = 0; i + sizeof level <= bytes.size(); i += sizeof level) {
        std::memcpy(&level, &bytes[i], sizeof level);
        level = convert(level);
        std::memcpy(&bytes[i], &level, sizeof level);
    }
}

double PerInch(double value, ResolutionUnit unit) {
    switch (unit) {
        case ResolutionUnit::Inch:
            return value;
        case ResolutionUnit::Centimetre:
            return value * 2.54;
        case ResolutionUnit::None:
            break;
    }
    return kDefaultResolution;
}

}  // namespace

HostDocument TakeDocument(Picture& picture, std::vector<std::uint8_t> mask) {
    HostImage image;
    image.width = picture.width;
    image.height = picture.height;
    image.planes = picture.Channels();
    image.depth = static_cast<int>(picture.SampleBytes() * 8);
    image.bytes = std::move(picture.samples);
    picture.samples.clear();
    if (picture.type == SampleType::UInt16) {
        ForEachLevel(image.bytes, FileToInterface);
    }
    HostDocument document = MakeDocument(std::move(image), picture.alpha, std::move(mask));
    if (picture.resolution) {
        document.horizontalResolution = PerInch(picture.resolution->x, picture.resolution->unit);
        document.verticalResolution = PerInch(picture.resolution->y, picture.resolution->unit);
    }
    return document;
}

void PutImage(HostImage&& image, Picture& picture) {
    picture.samples = std::move(image.bytes);
    if (picture.type == SampleType::UInt16) {
        ForEachLevel(picture.samples, InterfaceToFile);
    }
}

}  // namespace mv::host
