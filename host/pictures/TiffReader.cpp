#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "pictures/PictureSupport.h"

namespace mv::host {
namespace {

constexpr tmsize_t kLargestAllocation = tmsize_t{1} << 32;
// None of the common packings makes more than this of a byte.
constexpr std::uint64_t kLargestRatio = 1500;

struct TiffCloser {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffFile = std::unique_ptr<TIFF, TiffCloser>;

// What the tags say about the samples; filled by ReadLayout.
struct Layout {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t bits = 1;
    std::uint16_t samples = 1;
    std::uint16_t planar = PLANARCONFIG_CONTIG;
    std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    std::uint16_t orientation = ORIENTATION_TOPLEFT;
    std::uint16_t compression = COMPRESSION_NONE;
    bool premultiplied = false;
};

// The first complaint of the library is the useful one.
int KeepFirst(TIFF*, void* user, const char*, const char* format, va_list arguments) {
    auto* const message = static_cast<std::string*>(user);
    if (message->empty()) {
        char text[256];
        std::vsnprintf(text, sizeof text, format, arguments);
        *message = text;
    }
    return 1;
}

int Silence(TIFF*, void*, const char*, const char*, va_list) {
    return 1;
}

TiffFile Open(const std::filesystem::path& path, std::string& message) {
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    if (options == nullptr) {
        return nullptr;
    }
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, kLargestAllocation);
    TIFFOpenOptionsSetErrorHandlerExtR(options, KeepFirst, &message);
    TIFFOpenOptionsSetWarningHandlerExtR(options, Silence, nullptr);
    TiffFile tiff(TIFFOpenExt(path.c_str(), "r", options));
    TIFFOpenOptionsFree(options);
    return tiff;
}

std::string PhotometricName(std::uint16_t photometric) {
    switch (photometric) {
        case PHOTOMETRIC_SEPARATED:
            return "CMYK";
        case PHOTOMETRIC_CIELAB:
        case PHOTOMETRIC_ICCLAB:
        case PHOTOMETRIC_ITULAB:
            return "Lab";
        case PHOTOMETRIC_PALETTE:
            return "palette";
        case PHOTOMETRIC_YCBCR:
            return "YCbCr";
        case PHOTOMETRIC_LOGL:
        case PHOTOMETRIC_LOGLUV:
            return "LogLuv";
        default:
            return "unknown (" + std::to_string(photometric) + ")";
    }
}

PictureResult ReadColors(const std::filesystem::path& path, TIFF* tiff, Layout& layout,
                         Picture& picture) {
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &layout.compression);
    if (layout.compression == COMPRESSION_JPEG && layout.photometric == PHOTOMETRIC_YCBCR) {
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        layout.photometric = PHOTOMETRIC_RGB;
    }
    if (TIFFIsCODECConfigured(layout.compression) == 0) {
        return Unsupported(path, "is a TIFF picture with a compression (" +
                                     std::to_string(layout.compression) +
                                     ") that cannot be unpacked; save it with LZW");
    }
    if (layout.photometric != PHOTOMETRIC_MINISBLACK &&
        layout.photometric != PHOTOMETRIC_MINISWHITE && layout.photometric != PHOTOMETRIC_RGB) {
        return Unsupported(path, "is a TIFF picture with " + PhotometricName(layout.photometric) +
                                     " colours; convert it to gray or RGB first");
    }
    picture.colours = layout.photometric == PHOTOMETRIC_RGB ? 3 : 1;
    return {};
}

// One extra channel is transparency, also where its kind is not stated; more are not served,
// since a result without them would have lost something.
PictureResult ReadExtraSamples(const std::filesystem::path& path, TIFF* tiff, Layout& layout,
                               Picture& picture) {
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &layout.samples);
    const int extra = layout.samples - picture.colours;
    if (extra < 0 || extra > 1) {
        return Unsupported(path, "is a TIFF picture with " + std::to_string(layout.samples) +
                                     " channels; gray or RGB with at most one for transparency "
                                     "can be read");
    }
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds);
    picture.alpha = extra == 1;
    layout.premultiplied =
        picture.alpha && count > 0 && kinds != nullptr && kinds[0] == EXTRASAMPLE_ASSOCALPHA;
    return {};
}

PictureResult ReadSampleType(const std::filesystem::path& path, TIFF* tiff, Layout& layout,
                             Picture& picture) {
    std::uint16_t format = SAMPLEFORMAT_UINT;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &layout.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &format);
    const bool whole = format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_VOID;
    if (whole && layout.bits == 8) {
        picture.type = SampleType::UInt8;
    } else if (whole && layout.bits == 16) {
        picture.type = SampleType::UInt16;
    } else if (format == SAMPLEFORMAT_IEEEFP && layout.bits == 32) {
        picture.type = SampleType::Float32;
    } else {
        return Unsupported(path,
                           "is a TIFF picture with " + std::to_string(layout.bits) + "-bit " +
                               (format == SAMPLEFORMAT_IEEEFP ? "float" : "integer") +
                               " samples; 8 and 16 bit without sign and 32 bit float can be read");
    }
    return {};
}

PictureResult ReadLayout(const std::filesystem::path& path, TIFF* tiff, Layout& layout,
                         Picture& picture) {
    if (PictureResult failure = ReadColors(path, tiff, layout, picture); failure) {
        return failure;
    }
    if (PictureResult failure = ReadExtraSamples(path, tiff, layout, picture); failure) {
        return failure;
    }
    if (PictureResult failure = ReadSampleType(path, tiff, layout, picture); failure) {
        return failure;
    }
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &layout.planar);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &layout.orientation);
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height);
    return {};
}

// A block is a strip, or a tile: the part of the picture that is packed as one.
struct Block {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool tiled = false;
    tmsize_t bytes = 0;
};

Block BlockOf(TIFF* tiff, const Layout& layout) {
    Block block;
    block.tiled = TIFFIsTiled(tiff) != 0;
    if (block.tiled) {
        TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &block.width);
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &block.height);
        block.bytes = TIFFTileSize(tiff);
    } else {
        block.width = layout.width;
        TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &block.height);
        block.height = std::min(block.height, layout.height);
        block.bytes = TIFFStripSize(tiff);
    }
    return block;
}

// Copies what of a block lies inside the picture; `plane` is -1 when the pixels are whole.
void PlaceBlock(const std::uint8_t* from, const Block& block, std::uint32_t left, std::uint32_t top,
                int plane, Picture& picture) {
    const std::size_t sampleBytes = picture.SampleBytes();
    const std::size_t pixelBytes = picture.PixelBytes();
    const std::size_t unitBytes = plane < 0 ? pixelBytes : sampleBytes;
    const std::size_t width =
        std::min<std::size_t>(block.width, static_cast<std::size_t>(picture.width) - left);
    const std::size_t height =
        std::min<std::size_t>(block.height, static_cast<std::size_t>(picture.height) - top);
    for (std::size_t y = 0; y < height; ++y) {
        const std::uint8_t* unit = from + y * block.width * unitBytes;
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

enum class Outcome { Done, Failed, Stopped };

Outcome ReadPlane(TIFF* tiff, const Block& block, int plane, std::vector<std::uint8_t>& buffer,
                  Picture& picture, const StopFunction& stop) {
    const auto sample = static_cast<std::uint16_t>(std::max(plane, 0));
    const auto width = static_cast<std::uint32_t>(picture.width);
    const auto height = static_cast<std::uint32_t>(picture.height);
    for (std::uint32_t top = 0; top < height; top += block.height) {
        if (stop && stop()) {
            return Outcome::Stopped;
        }
        for (std::uint32_t left = 0; left < width; left += block.width) {
            const tmsize_t read =
                block.tiled ? TIFFReadEncodedTile(tiff, TIFFComputeTile(tiff, left, top, 0, sample),
                                                  buffer.data(), block.bytes)
                            : TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, top, sample),
                                                   buffer.data(), block.bytes);
            if (read < 0) {
                return Outcome::Failed;
            }
            PlaceBlock(buffer.data(), block, left, top, plane, picture);
        }
    }
    return Outcome::Done;
}

Outcome ReadSamples(TIFF* tiff, const Layout& layout, Picture& picture, const StopFunction& stop) {
    const Block block = BlockOf(tiff, layout);
    const bool separate = layout.planar == PLANARCONFIG_SEPARATE;
    const std::size_t unitBytes = separate ? picture.SampleBytes() : picture.PixelBytes();
    // The library's own figure and ours must agree, or the rows would be misread.
    const std::uint64_t expected = std::uint64_t{block.width} * block.height * unitBytes;
    if (block.width == 0 || block.height == 0 || block.bytes <= 0 ||
        static_cast<std::uint64_t>(block.bytes) != expected || block.bytes > kLargestAllocation) {
        return Outcome::Failed;
    }
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(block.bytes));
    if (!separate) {
        return ReadPlane(tiff, block, -1, buffer, picture, stop);
    }
    for (int plane = 0; plane < picture.Channels(); ++plane) {
        const Outcome outcome = ReadPlane(tiff, block, plane, buffer, picture, stop);
        if (outcome != Outcome::Done) {
            return outcome;
        }
    }
    return Outcome::Done;
}

// White is 0 there: gray counts the other way round. Alpha does not.
void InvertGray(Picture& picture) {
    const std::size_t sampleBytes = picture.SampleBytes();
    std::uint8_t* pixel = picture.samples.data();
    std::uint8_t* const end = pixel + picture.samples.size();
    for (; pixel != end; pixel += picture.PixelBytes()) {
        if (picture.type == SampleType::Float32) {
            float value;
            std::memcpy(&value, pixel, sizeof value);
            value = 1.0F - value;
            std::memcpy(pixel, &value, sizeof value);
        } else {
            std::for_each_n(pixel, sampleBytes,
                            [](std::uint8_t& byte) { byte = static_cast<std::uint8_t>(~byte); });
        }
    }
}

void TakeDescription(TIFF* tiff, Picture& picture) {
    std::uint32_t length = 0;
    void* profile = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &length, &profile) != 0 && length > 0) {
        const auto* const bytes = static_cast<const std::uint8_t*>(profile);
        picture.color.iccProfile.assign(bytes, bytes + length);
    }
    float x = 0.0F;
    float y = 0.0F;
    if (TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x) != 0 &&
        TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y) != 0 && x > 0.0F && y > 0.0F) {
        std::uint16_t unit = RESUNIT_INCH;
        TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
        picture.resolution = Resolution{x, y,
                                        unit == RESUNIT_CENTIMETER ? ResolutionUnit::Centimetre
                                        : unit == RESUNIT_INCH     ? ResolutionUnit::Inch
                                                                   : ResolutionUnit::None};
    }
}

// A few bytes that claim to be hundreds of megapixels are not worth the memory.
bool CanHold(const std::filesystem::path& path, const Layout& layout, const Picture& picture) {
    switch (layout.compression) {
        case COMPRESSION_NONE:
        case COMPRESSION_LZW:
        case COMPRESSION_PACKBITS:
        case COMPRESSION_DEFLATE:
        case COMPRESSION_ADOBE_DEFLATE:
            break;
        default:
            return true;
    }
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    const std::uint64_t rowBytes = std::uint64_t{layout.width} * picture.PixelBytes();
    return error || rowBytes * layout.height / kLargestRatio <= size;
}

PictureResult Damaged(const std::filesystem::path& path, const std::string& message) {
    const std::string detail = message.empty() ? std::string() : " (" + message + ")";
    return Unsupported(path, "is a damaged TIFF picture" + detail + "; get a good copy of it");
}

}  // namespace

PictureResult ReadTiff(const std::filesystem::path& path, Picture& picture,
                       const StopFunction& stop) {
    std::string message;
    const TiffFile tiff = Open(path, message);
    if (tiff == nullptr) {
        return Damaged(path, message);
    }
    Layout layout;
    if (PictureResult failure = ReadLayout(path, tiff.get(), layout, picture); failure) {
        return failure;
    }
    const bool plausible = CanHold(path, layout, picture);
    if (PictureResult failure = CheckSize(path, layout.width, layout.height); failure) {
        return failure;
    }
    if (!plausible) {
        return Damaged(path, kTooSmall);
    }
    if (PictureResult failure = MakeRoom(path, layout.width, layout.height, picture); failure) {
        return failure;
    }
    TakeDescription(tiff.get(), picture);
    switch (ReadSamples(tiff.get(), layout, picture, stop)) {
        case Outcome::Failed:
            return Damaged(path, message);
        case Outcome::Stopped:
            return Stopped(path);
        case Outcome::Done:
            break;
    }
    if (layout.photometric == PHOTOMETRIC_MINISWHITE) {
        InvertGray(picture);
    }
    if (layout.premultiplied) {
        Unpremultiply(picture);
    }
    ApplyOrientation(picture, layout.orientation);
    return {};
}

}  // namespace mv::host
