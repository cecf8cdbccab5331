#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <memory>

#include "pictures/PictureSupport.h"
#include "pictures/TiffLayout.h"

namespace mv::host {
namespace {

constexpr tmsize_t kLargestAllocation = tmsize_t{1} << 32;

struct TiffCloser {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffFile = std::unique_ptr<TIFF, TiffCloser>;

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

TiffLayout ReadLayout(TIFF* tiff) {
    TiffLayout layout;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &layout.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &layout.samples);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &layout.sampleFormat);
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &layout.planar);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &layout.orientation);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &layout.compression);
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    if (TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) != 0 && count > 0) {
        layout.extraSample = kinds[0];
    }
    layout.tiled = TIFFIsTiled(tiff) != 0;
    if (layout.tiled) {
        TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &layout.blockWidth);
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &layout.blockHeight);
    } else {
        layout.blockWidth = layout.width;
        TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &layout.blockHeight);
        layout.blockHeight = std::min(layout.blockHeight, layout.height);
    }
    return layout;
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

PictureResult Prepare(const std::filesystem::path& path, TIFF* tiff, const TiffLayout& layout,
                      Picture& picture) {
    if (PictureResult failure = JudgeTiff(path, layout, picture); failure) {
        return failure;
    }
    if (TIFFIsCODECConfigured(layout.compression) == 0) {
        return Unsupported(path, "is a TIFF picture with a compression (" +
                                     std::to_string(layout.compression) +
                                     ") that cannot be unpacked; save it with LZW");
    }
    if (layout.compression == COMPRESSION_JPEG && layout.photometric == PHOTOMETRIC_YCBCR) {
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    }
    return MakeRoom(path, layout.width, layout.height, picture);
}

}  // namespace

PictureResult ReadTiff(const std::filesystem::path& path, Picture& picture,
                       const StopFunction& stop) {
    std::string message;
    const TiffFile tiff = Open(path, message);
    if (tiff == nullptr) {
        return DamagedTiff(path, message);
    }
    const TiffLayout layout = ReadLayout(tiff.get());
    if (PictureResult failure = Prepare(path, tiff.get(), layout, picture); failure) {
        return failure;
    }
    TakeDescription(tiff.get(), picture);
    // The library's own figure and ours must agree, or the rows would be misread.
    const tmsize_t size = layout.tiled ? TIFFTileSize(tiff.get()) : TIFFStripSize(tiff.get());
    if (size <= 0 || static_cast<std::uint64_t>(size) != BlockBytes(layout, picture)) {
        return DamagedTiff(path, message);
    }
    const auto reader = [&](std::uint32_t index, std::span<std::uint8_t> bytes) {
        const auto wanted = static_cast<tmsize_t>(bytes.size());
        const tmsize_t read = layout.tiled
                                  ? TIFFReadEncodedTile(tiff.get(), index, bytes.data(), wanted)
                                  : TIFFReadEncodedStrip(tiff.get(), index, bytes.data(), wanted);
        return read == wanted;
    };
    switch (ReadBlocks(layout, picture, reader, stop)) {
        case BlockOutcome::Failed:
            return DamagedTiff(path, message);
        case BlockOutcome::Stopped:
            return Stopped(path);
        case BlockOutcome::Done:
            break;
    }
    NormalizeTiff(layout, picture);
    return {};
}

}  // namespace mv::host
