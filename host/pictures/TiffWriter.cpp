#include <sys/stat.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

#include "pictures/PictureSupport.h"

namespace mv::host {
namespace {

// Offsets of the older form have 32 bits; some room is left for what packing may add.
constexpr std::uint64_t kLargestClassicFile = 0xF000'0000;

struct TiffCloser {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffFile = std::unique_ptr<TIFF, TiffCloser>;

int NoteFailure(TIFF*, void* user, const char*, const char*, va_list) {
    *static_cast<bool*>(user) = true;
    return 1;
}

int Silence(TIFF*, void*, const char*, const char*, va_list) {
    return 1;
}

// The library reads back what it wrote when it completes the directory.
tmsize_t ReadBytes(thandle_t handle, void* data, tmsize_t size) {
    return read(static_cast<AtomicFile*>(handle)->Descriptor(), data,
                static_cast<std::size_t>(size));
}

tmsize_t WriteBytes(thandle_t handle, void* data, tmsize_t size) {
    const bool written =
        static_cast<AtomicFile*>(handle)->Write(data, static_cast<std::size_t>(size));
    return written ? size : -1;
}

toff_t Seek(thandle_t handle, toff_t offset, int origin) {
    return static_cast<toff_t>(
        lseek(static_cast<AtomicFile*>(handle)->Descriptor(), static_cast<off_t>(offset), origin));
}

toff_t Size(thandle_t handle) {
    struct stat status {};
    fstat(static_cast<AtomicFile*>(handle)->Descriptor(), &status);
    return static_cast<toff_t>(status.st_size);
}

int KeepOpen(thandle_t) {
    return 0;
}

TiffFile Open(AtomicFile& file, bool large, bool& failed) {
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    if (options == nullptr) {
        return nullptr;
    }
    TIFFOpenOptionsSetErrorHandlerExtR(options, NoteFailure, &failed);
    TIFFOpenOptionsSetWarningHandlerExtR(options, Silence, nullptr);
    TiffFile tiff(TIFFClientOpenExt("picture", large ? "w8" : "w", &file, ReadBytes, WriteBytes,
                                    Seek, KeepOpen, Size, nullptr, nullptr, options));
    TIFFOpenOptionsFree(options);
    return tiff;
}

void SetLayout(TIFF* tiff, const Picture& picture) {
    const bool isFloat = picture.type == SampleType::Float32;
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(picture.width));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(picture.height));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, static_cast<int>(picture.SampleBytes() * 8));
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, isFloat ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, picture.Channels());
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
                 picture.colours == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    if (picture.alpha) {
        const std::uint16_t kind = EXTRASAMPLE_UNASSALPHA;
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
    }
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, isFloat ? PREDICTOR_FLOATINGPOINT : PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
}

void SetDescription(TIFF* tiff, const Picture& picture) {
    const std::vector<std::uint8_t>& profile = picture.color.iccProfile;
    if (!profile.empty()) {
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(profile.size()),
                     profile.data());
    }
    if (!picture.resolution) {
        return;
    }
    std::uint16_t unit = RESUNIT_NONE;
    if (picture.resolution->unit == ResolutionUnit::Inch) {
        unit = RESUNIT_INCH;
    } else if (picture.resolution->unit == ResolutionUnit::Centimetre) {
        unit = RESUNIT_CENTIMETER;
    }
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, unit);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, picture.resolution->x);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, picture.resolution->y);
}

enum class Outcome { Done, Failed, Stopped };

Outcome WriteStrips(TIFF* tiff, const Picture& picture, const StopFunction& stop) {
    std::uint32_t rows = 0;
    TIFFGetField(tiff, TIFFTAG_ROWSPERSTRIP, &rows);
    const int step = static_cast<int>(rows);
    std::vector<std::uint8_t> strip;
    for (int y = 0; y < picture.height; y += step) {
        if (stop && stop()) {
            return Outcome::Stopped;
        }
        const int count = std::min(step, picture.height - y);
        const std::size_t bytes = picture.RowBytes() * static_cast<std::size_t>(count);
        // The predictor works in place, so that each strip is handed over as a copy.
        strip.assign(picture.Row(y), picture.Row(y) + bytes);
        const std::uint32_t index = TIFFComputeStrip(tiff, static_cast<std::uint32_t>(y), 0);
        if (TIFFWriteEncodedStrip(tiff, index, strip.data(), static_cast<tmsize_t>(bytes)) < 0) {
            return Outcome::Failed;
        }
    }
    return TIFFWriteDirectory(tiff) == 0 ? Outcome::Failed : Outcome::Done;
}

}  // namespace

PictureResult WriteTiff(const std::filesystem::path& path, AtomicFile& file, const Picture& picture,
                        const StopFunction& stop) {
    const bool large = picture.samples.size() > kLargestClassicFile;
    bool failed = false;
    Outcome outcome = Outcome::Failed;
    {
        const TiffFile tiff = Open(file, large, failed);
        if (tiff != nullptr) {
            SetLayout(tiff.get(), picture);
            SetDescription(tiff.get(), picture);
            outcome = WriteStrips(tiff.get(), picture, stop);
        }
    }
    if (outcome == Outcome::Stopped) {
        return Stopped(path);
    }
    // Closing writes too, and can only complain through the handler.
    if (outcome == Outcome::Failed || failed) {
        return CannotWrite(
            path, file.HasFailed() ? file.WriteFailure() : "there is not enough memory to pack it");
    }
    return {};
}

}  // namespace mv::host
