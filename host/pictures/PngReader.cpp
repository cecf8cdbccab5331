#include <png.h>

#include <bit>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>

#include "pictures/PictureSupport.h"

namespace mv::host {
namespace {

// No deflate stream unpacks to more than this many times its size.
constexpr std::uint64_t kLargestDeflateRatio = 1032;
constexpr png_alloc_size_t kLargestChunk = png_alloc_size_t{64} << 20;
constexpr int kRowsBetweenStops = 64;

// Everything that must outlive libpng's longjmp lives here, none of it in the functions that call
// setjmp, which therefore hold no object with a destructor.
struct Reading {
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::FILE* file = nullptr;
    const StopFunction* stop = nullptr;
    bool stopped = false;
    char message[128] = {};

    Reading() = default;
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;
    ~Reading() {
        png_destroy_read_struct(&png, &info, nullptr);
        if (file != nullptr) {
            std::fclose(file);
        }
    }
};

[[noreturn]] void KeepError(png_structp png, png_const_charp message) {
    auto* const reading = static_cast<Reading*>(png_get_error_ptr(png));
    std::strncpy(reading->message, message, sizeof reading->message - 1);
    png_longjmp(png, 1);
}

void IgnoreWarning(png_structp, png_const_charp) {}

bool Open(Reading& reading, const std::filesystem::path& path) {
    reading.file = std::fopen(path.c_str(), "rb");
    if (reading.file == nullptr) {
        return false;
    }
    reading.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &reading, KeepError, IgnoreWarning);
    if (reading.png != nullptr) {
        reading.info = png_create_info_struct(reading.png);
    }
    return true;
}

bool ReadHeader(Reading& reading) {
    if (reading.png == nullptr || reading.info == nullptr || setjmp(png_jmpbuf(reading.png)) != 0) {
        return false;
    }
    png_init_io(reading.png, reading.file);
    // The size is judged by MakeRoom, with a sentence of its own.
    png_set_user_limits(reading.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_chunk_malloc_max(reading.png, kLargestChunk);
#ifdef PNG_SKIP_sRGB_CHECK_PROFILE
    // A profile travels as it is, also one that resembles the standard's.
    png_set_option(reading.png, PNG_SKIP_sRGB_CHECK_PROFILE, PNG_OPTION_ON);
#endif
    png_read_info(reading.png, reading.info);
    return true;
}

// Palettes and transparent colours become channels, small gray depths eight bits.
bool Expand(Reading& reading) {
    if (setjmp(png_jmpbuf(reading.png)) != 0) {
        return false;
    }
    png_set_expand(reading.png);
    if (std::endian::native == std::endian::little) {
        png_set_swap(reading.png);
    }
    png_set_interlace_handling(reading.png);
    png_read_update_info(reading.png, reading.info);
    return true;
}

bool ReadRows(Reading& reading, Picture& picture, int passes) {
    if (setjmp(png_jmpbuf(reading.png)) != 0) {
        return false;
    }
    for (int pass = 0; pass < passes; ++pass) {
        for (int y = 0; y < picture.height; ++y) {
            if (y % kRowsBetweenStops == 0 && *reading.stop && (*reading.stop)()) {
                reading.stopped = true;
                return false;
            }
            png_read_row(reading.png, picture.Row(y), nullptr);
        }
    }
    png_read_end(reading.png, nullptr);
    return true;
}

void TakeColor(const Reading& reading, ColorDescription& color) {
    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 length = 0;
    if (png_get_iCCP(reading.png, reading.info, &name, &compression, &profile, &length) != 0) {
        color.iccProfile.assign(profile, profile + length);
    }
    int intent = 0;
    if (png_get_sRGB(reading.png, reading.info, &intent) != 0) {
        color.srgbIntent = intent;
    }
    png_fixed_point gamma = 0;
    if (png_get_gAMA_fixed(reading.png, reading.info, &gamma) != 0) {
        color.fileGamma = gamma;
    }
    std::array<png_fixed_point, 8> points{};
    if (png_get_cHRM_fixed(reading.png, reading.info, &points[0], &points[1], &points[2],
                           &points[3], &points[4], &points[5], &points[6], &points[7]) != 0) {
        color.chromaticities = points;
    }
}

void TakeResolution(const Reading& reading, std::optional<Resolution>& resolution) {
    png_uint_32 x = 0;
    png_uint_32 y = 0;
    int unit = 0;
    if (png_get_pHYs(reading.png, reading.info, &x, &y, &unit) != 0 && x > 0 && y > 0) {
        const bool metres = unit == PNG_RESOLUTION_METER;
        const double scale = metres ? 0.01 : 1.0;
        resolution = Resolution{x * scale, y * scale,
                                metres ? ResolutionUnit::Centimetre : ResolutionUnit::None};
    }
}

// A few bytes that claim to be thousands of megapixels are not worth the memory.
bool CanHold(const std::filesystem::path& path, const Reading& reading, std::uint64_t height) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    const std::uint64_t wanted = png_get_rowbytes(reading.png, reading.info) * height;
    return error || wanted / kLargestDeflateRatio <= size;
}

PictureResult Damaged(const std::filesystem::path& path, const Reading& reading) {
    if (reading.stopped) {
        return Stopped(path);
    }
    if (reading.file != nullptr && std::ferror(reading.file) != 0) {
        return CannotRead(path, "reading from it fails");
    }
    std::string text = "is a damaged PNG picture";
    if (reading.message[0] != '\0') {
        text += std::string(" (") + reading.message + ")";
    }
    return Unsupported(path, text + "; get a good copy of it");
}

}  // namespace

PictureResult ReadPng(const std::filesystem::path& path, Picture& picture,
                      const StopFunction& stop) {
    const auto reading = std::make_unique<Reading>();
    reading->stop = &stop;
    if (!Open(*reading, path)) {
        return CannotRead(path, "the system does not let this program open it");
    }
    if (!ReadHeader(*reading)) {
        return Damaged(path, *reading);
    }
    const std::uint64_t width = png_get_image_width(reading->png, reading->info);
    const std::uint64_t height = png_get_image_height(reading->png, reading->info);
    const bool plausible = CanHold(path, *reading, height);
    const bool deep = png_get_bit_depth(reading->png, reading->info) == 16;
    const int passes =
        png_get_interlace_type(reading->png, reading->info) == PNG_INTERLACE_NONE ? 1 : 7;
    if (!Expand(*reading)) {
        return Damaged(path, *reading);
    }
    const int channels = png_get_channels(reading->png, reading->info);
    picture.type = deep ? SampleType::UInt16 : SampleType::UInt8;
    picture.colours = channels >= 3 ? 3 : 1;
    picture.alpha = channels == 2 || channels == 4;
    if (PictureResult failure = CheckSize(path, width, height); failure) {
        return failure;
    }
    if (!plausible) {
        std::strncpy(reading->message, kTooSmall, sizeof reading->message - 1);
        return Damaged(path, *reading);
    }
    if (PictureResult failure = MakeRoom(path, width, height, picture); failure) {
        return failure;
    }
    TakeColor(*reading, picture.color);
    TakeResolution(*reading, picture.resolution);
    if (!ReadRows(*reading, picture, passes)) {
        return Damaged(path, *reading);
    }
    return {};
}

}  // namespace mv::host
