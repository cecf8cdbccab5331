#include "pictures/TiffLayout.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "pictures/PictureSupport.h"

namespace mv::host {
namespace {

constexpr std::uint64_t kLargestBlock = std::uint64_t{1} << 32;
// None of the common packings makes more than this of a byte.
constexpr std::uint64_t kLargestRatio = 1500;
// Of a block. A tile may be larger than the picture, but not without measure, and the bytes of
// larger ones could not be counted in 64 bits.
constexpr std::uint32_t kLargestBlockSide = 65536;
constexpr std::uint64_t kUsualBlock = std::uint64_t{64} << 20;

std::string ColourName(std::uint16_t photometric) {
    switch (photometric) {
        case 3:
            return "palette";
        case 5:
            return "CMYK";
        case tiff::kYCbCr:
            return "YCbCr";
        case 8:
        case 9:
        case 10:
            return "Lab";
        case 32844:
        case 32845:
            return "LogLuv";
        default:
            return "unknown (" + std::to_string(photometric) + ")";
    }
}

PictureResult JudgeColours(const std::filesystem::path& path, const TiffLayout& layout,
                           Picture& picture) {
    const bool unpackedToRgb =
        layout.compression == tiff::kJpeg && layout.photometric == tiff::kYCbCr;
    const bool gray =
        layout.photometric == tiff::kWhiteIsZero || layout.photometric == tiff::kBlackIsZero;
    if (!gray && layout.photometric != tiff::kRgb && !unpackedToRgb) {
        return Unsupported(path, "is a TIFF picture with " + ColourName(layout.photometric) +
                                     " colours; convert it to gray or RGB first");
    }
    picture.colours = gray ? 1 : 3;
    // One extra channel is transparency, also where its kind is not stated; more are not served,
    // since a result without them would have lost something.
    const int extra = layout.samples - picture.colours;
    if (extra < 0 || extra > 1) {
        return Unsupported(path, "is a TIFF picture with " + std::to_string(layout.samples) +
                                     " channels; gray or RGB with at most one for transparency "
                                     "can be read");
    }
    picture.alpha = extra == 1;
    return {};
}

PictureResult JudgeSamples(const std::filesystem::path& path, const TiffLayout& layout,
                           Picture& picture) {
    const bool whole =
        layout.sampleFormat == tiff::kUnsigned || layout.sampleFormat == tiff::kUndefinedFormat;
    if (whole && layout.bits == 8) {
        picture.type = SampleType::UInt8;
    } else if (whole && layout.bits == 16) {
        picture.type = SampleType::UInt16;
    } else if (layout.sampleFormat == tiff::kFloat && layout.bits == 32) {
        picture.type = SampleType::Float32;
    } else {
        return Unsupported(path,
                           "is a TIFF picture with " + std::to_string(layout.bits) + "-bit " +
                               (layout.sampleFormat == tiff::kFloat ? "float" : "integer") +
                               " samples; 8 and 16 bit without sign and 32 bit float can be read");
    }
    return {};
}

// A few bytes that claim to be hundreds of megapixels, in all or in a single tile, are not worth
// the memory.
bool CanHold(const std::filesystem::path& path, const TiffLayout& layout, const Picture& picture) {
    const std::uint64_t rowBytes = std::uint64_t{layout.width} * picture.PixelBytes();
    const std::uint64_t pictureBytes = rowBytes * layout.height;
    const std::uint64_t blockBytes = BlockBytes(layout, picture);
    if (blockBytes > std::max(kUsualBlock, 4 * pictureBytes)) {
        return false;
    }
    switch (layout.compression) {
        case tiff::kNotPacked:
        case tiff::kLzw:
        case tiff::kPackBits:
        case tiff::kDeflate:
        case tiff::kOldDeflate:
            break;
        default:
            return true;
    }
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return error || std::max(pictureBytes, blockBytes) / kLargestRatio <= size;
}

std::uint32_t BlocksAcross(const TiffLayout& layout) {
    return (layout.width + layout.blockWidth - 1) / layout.blockWidth;
}

std::uint32_t BlocksDown(const TiffLayout& layout) {
    return (layout.height + layout.blockHeight - 1) / layout.blockHeight;
}

// Copies what of a block lies inside the picture; `plane` is -1 when the pixels are whole.
void PlaceBlock(const std::uint8_t* from, const TiffLayout& layout, std::uint32_t left,
                std::uint32_t top, int plane, Picture& picture) {
    const std::size_t sampleBytes = picture.SampleBytes();
    const std::size_t pixelBytes = picture.PixelBytes();
    const std::size_t unitBytes = plane < 0 ? pixelBytes : sampleBytes;
    const std::size_t width = std::min(layout.blockWidth, layout.width - left);
    const std::size_t height = std::min(layout.blockHeight, layout.height - top);
    for (std::size_t y = 0; y < height; ++y) {
        const std::uint8_t* unit = from + y * layout.blockWidth * unitBytes;
        std::uint8_t* to = picture.Row(static_cast<int>(top + y)) + left * pixelBytes;
        if (plane < 0) {
            std::memcpy(to, unit, width * pixelBytes);
            continue;
        }
        to += static_cast<std::size_t>(plane) * sampleBytes;
        for (std::size_t x = 0; x < width; ++x, unit += sampleBytes, to += pixelBytes) {
            std::memcpy(to, unit, sampleBytes);
        }
    }
}

// White is 0 there: gray counts the other way round. Alpha does not.
void InvertGray(Picture& picture) {
    std::uint8_t* pixel = picture.samples.data();
    std::uint8_t* const end = pixel + picture.samples.size();
    for (; pixel != end; pixel += picture.PixelBytes()) {
        if (picture.type == SampleType::Float32) {
            float value;
            std::memcpy(&value, pixel, sizeof value);
            value = 1.0F - value;
            std::memcpy(pixel, &value, sizeof value);
        } else {
            std::for_each_n(pixel, picture.SampleBytes(),
                            [](std::uint8_t& byte) { byte = static_cast<std::uint8_t>(~byte); });
        }
    }
}

}  // namespace

PictureError DamagedTiff(const std::filesystem::path& path, const std::string& detail) {
    const std::string text = detail.empty() ? std::string() : " (" + detail + ")";
    return Unsupported(path, "is a damaged TIFF picture" + text + "; get a good copy of it");
}

PictureResult JudgeTiff(const std::filesystem::path& path, const TiffLayout& layout,
                        Picture& picture) {
    if (PictureResult failure = JudgeColours(path, layout, picture); failure) {
        return failure;
    }
    if (PictureResult failure = JudgeSamples(path, layout, picture); failure) {
        return failure;
    }
    if (PictureResult failure = CheckSize(path, layout.width, layout.height); failure) {
        return failure;
    }
    if (layout.blockWidth > kLargestBlockSide || layout.blockHeight > kLargestBlockSide ||
        !CanHold(path, layout, picture)) {
        return DamagedTiff(path, kTooSmall);
    }
    return {};
}

std::uint64_t BlockBytes(const TiffLayout& layout, const Picture& picture) {
    const std::size_t unitBytes =
        layout.planar == tiff::kSeparatePlanes ? picture.SampleBytes() : picture.PixelBytes();
    return std::uint64_t{layout.blockWidth} * layout.blockHeight * unitBytes;
}

BlockOutcome ReadBlocks(const TiffLayout& layout, Picture& picture, const BlockReader& reader,
                        const StopFunction& stop) {
    const std::uint64_t blockBytes = BlockBytes(layout, picture);
    if (layout.blockWidth > kLargestBlockSide || layout.blockHeight > kLargestBlockSide ||
        blockBytes == 0 || blockBytes > kLargestBlock) {
        return BlockOutcome::Failed;
    }
    const bool separate = layout.planar == tiff::kSeparatePlanes;
    std::vector<std::uint8_t> block(static_cast<std::size_t>(blockBytes));
    std::uint32_t index = 0;
    for (int plane = 0; plane < (separate ? picture.Channels() : 1); ++plane) {
        for (std::uint32_t row = 0; row < BlocksDown(layout); ++row) {
            if (stop && stop()) {
                return BlockOutcome::Stopped;
            }
            const std::uint32_t top = row * layout.blockHeight;
            const std::uint32_t rows = layout.tiled
                                           ? layout.blockHeight
                                           : std::min(layout.blockHeight, layout.height - top);
            const auto bytes = static_cast<std::size_t>(blockBytes / layout.blockHeight * rows);
            for (std::uint32_t column = 0; column < BlocksAcross(layout); ++column, ++index) {
                if (!reader(index, std::span(block).first(bytes))) {
                    return BlockOutcome::Failed;
                }
                PlaceBlock(block.data(), layout, column * layout.blockWidth, top,
                           separate ? plane : -1, picture);
            }
        }
    }
    return BlockOutcome::Done;
}

void NormalizeTiff(const TiffLayout& layout, Picture& picture) {
    if (layout.photometric == tiff::kWhiteIsZero) {
        InvertGray(picture);
    }
    if (picture.alpha && layout.extraSample == tiff::kMultipliedAlpha) {
        Unpremultiply(picture);
    }
    ApplyOrientation(picture, layout.orientation);
}

}  // namespace mv::host
