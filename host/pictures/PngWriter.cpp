#include <png.h>

#include <bit>
#include <cmath>
#include <csetjmp>
#include <memory>

#include "pictures/PictureSupport.h"

namespace mv::host {
namespace {

constexpr int kRowsBetweenStops = 64;
// A third of the time of the usual level 6, for files that are a fifteenth larger.
constexpr int kCompressionLevel = 4;

// Outlives libpng's longjmp; see the reader.
struct Writing {
    png_structp png = nullptr;
    png_infop info = nullptr;
    AtomicFile* file = nullptr;
    const StopFunction* stop = nullptr;
    bool stopped = false;

    Writing() = default;
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;
    ~Writing() { png_destroy_write_struct(&png, &info); }
};

[[noreturn]] void LeaveOnError(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}

void IgnoreWarning(png_structp, png_const_charp) {}

void WriteBytes(png_structp png, png_bytep data, png_size_t size) {
    auto* const writing = static_cast<Writing*>(png_get_io_ptr(png));
    if (!writing->file->Write(data, size)) {
        png_error(png, "write");
    }
}

void FlushNothing(png_structp) {}

void SetColor(const Writing& writing, const ColorDescription& color) {
    png_struct* const png = writing.png;
    png_info* const info = writing.info;
    if (color.fileGamma) {
        png_set_gAMA_fixed(png, info, *color.fileGamma);
    }
    if (color.chromaticities) {
        const std::array<std::int32_t, 8>& at = *color.chromaticities;
        png_set_cHRM_fixed(png, info, at[0], at[1], at[2], at[3], at[4], at[5], at[6], at[7]);
    }
    // The format allows one of the two.
    if (!color.iccProfile.empty()) {
        png_set_iCCP(png, info, "ICC profile", PNG_COMPRESSION_TYPE_BASE, color.iccProfile.data(),
                     static_cast<png_uint_32>(color.iccProfile.size()));
    } else if (color.srgbIntent) {
        png_set_sRGB(png, info, *color.srgbIntent);
    }
}

void SetResolution(const Writing& writing, const Resolution& resolution) {
    double scale = 1.0;  // to pixels per metre
    if (resolution.unit == ResolutionUnit::Inch) {
        scale = 1.0 / 0.0254;
    } else if (resolution.unit == ResolutionUnit::Centimetre) {
        scale = 100.0;
    }
    const auto pixels = [scale](double value) {
        return static_cast<png_uint_32>(std::lround(std::fmin(value * scale, 2147483647.0)));
    };
    png_set_pHYs(
        writing.png, writing.info, pixels(resolution.x), pixels(resolution.y),
        resolution.unit == ResolutionUnit::None ? PNG_RESOLUTION_UNKNOWN : PNG_RESOLUTION_METER);
}

bool WriteHeader(Writing& writing, const Picture& picture) {
    if (writing.png == nullptr || writing.info == nullptr || setjmp(png_jmpbuf(writing.png)) != 0) {
        return false;
    }
    png_set_write_fn(writing.png, &writing, WriteBytes, FlushNothing);
    int type = picture.colours == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB;
    if (picture.alpha) {
        type |= PNG_COLOR_MASK_ALPHA;
    }
    png_set_IHDR(writing.png, writing.info, static_cast<png_uint_32>(picture.width),
                 static_cast<png_uint_32>(picture.height),
                 picture.type == SampleType::UInt16 ? 16 : 8, type, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
#ifdef PNG_SKIP_sRGB_CHECK_PROFILE
    png_set_option(writing.png, PNG_SKIP_sRGB_CHECK_PROFILE, PNG_OPTION_ON);
#endif
    png_set_compression_level(writing.png, kCompressionLevel);
    SetColor(writing, picture.color);
    if (picture.resolution) {
        SetResolution(writing, *picture.resolution);
    }
    png_write_info(writing.png, writing.info);
    if (picture.type == SampleType::UInt16 && std::endian::native == std::endian::little) {
        png_set_swap(writing.png);
    }
    return true;
}

bool WriteRows(Writing& writing, const Picture& picture) {
    if (setjmp(png_jmpbuf(writing.png)) != 0) {
        return false;
    }
    for (int y = 0; y < picture.height; ++y) {
        if (y % kRowsBetweenStops == 0 && *writing.stop && (*writing.stop)()) {
            writing.stopped = true;
            return false;
        }
        png_write_row(writing.png, picture.Row(y));
    }
    png_write_end(writing.png, nullptr);
    return true;
}

}  // namespace

PictureResult WritePng(const std::filesystem::path& path, AtomicFile& file, const Picture& picture,
                       const StopFunction& stop) {
    const auto writing = std::make_unique<Writing>();
    writing->file = &file;
    writing->stop = &stop;
    writing->png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, LeaveOnError, IgnoreWarning);
    if (writing->png != nullptr) {
        writing->info = png_create_info_struct(writing->png);
    }
    if (WriteHeader(*writing, picture) && WriteRows(*writing, picture)) {
        return {};
    }
    if (writing->stopped) {
        return Stopped(path);
    }
    return CannotWrite(
        path, file.HasFailed() ? file.WriteFailure() : "there is not enough memory to pack it");
}

}  // namespace mv::host
