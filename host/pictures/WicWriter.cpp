// Writes PNG and TIFF files through Windows' own imaging component, where it has the pixel format.
// It has no gray with alpha: PNG files get three equal colours then, TIFF files are written plain,
// as are those float and 16-bit gray shapes that a system's component (such as Wine's) does not
// write.
#include <algorithm>
#include <cstring>
#include <vector>

#include "pictures/PictureSupport.h"
#include "pictures/PlainTiff.h"
#include "pictures/PngChunks.h"
#include "pictures/WicSupport.h"

namespace mv::host {
namespace {

constexpr std::size_t kBandBytes = std::size_t{1} << 24;
constexpr std::uint64_t kLargestTiff = 0xF000'0000;

enum class Outcome { Done, NoSuchFormat, Failed, Stopped };

struct Target {
    ComPointer<IStream> stream;  // in memory
    ComPointer<IWICBitmapEncoder> encoder;
    ComPointer<IWICBitmapFrameEncode> frame;
};

HRESULT Open(const WicFactory& factory, const GUID& container, Target& target) {
    HRESULT result = CreateStreamOnHGlobal(nullptr, TRUE, target.stream.Cell());
    if (SUCCEEDED(result)) {
        result = factory->CreateEncoder(container, nullptr, target.encoder.Cell());
    }
    if (SUCCEEDED(result)) {
        result = target.encoder->Initialize(target.stream.Get(), WICBitmapEncoderNoCache);
    }
    if (SUCCEEDED(result)) {
        result = target.encoder->CreateNewFrame(target.frame.Cell(), nullptr);
    }
    return SUCCEEDED(result) ? target.frame->Initialize(nullptr) : result;
}

double PerInch(double value, ResolutionUnit unit) {
    return unit == ResolutionUnit::Centimetre ? value * 2.54 : value;
}

HRESULT Describe(const WicFactory& factory, const Picture& picture, bool withProfile,
                 Target& target) {
    HRESULT result =
        target.frame->SetSize(static_cast<UINT>(picture.width), static_cast<UINT>(picture.height));
    if (SUCCEEDED(result) && picture.resolution) {
        result =
            target.frame->SetResolution(PerInch(picture.resolution->x, picture.resolution->unit),
                                        PerInch(picture.resolution->y, picture.resolution->unit));
    }
    const std::vector<std::uint8_t>& profile = picture.color.iccProfile;
    if (SUCCEEDED(result) && withProfile && !profile.empty()) {
        ComPointer<IWICColorContext> context;
        result = factory->CreateColorContext(context.Cell());
        if (SUCCEEDED(result)) {
            result =
                context->InitializeFromMemory(profile.data(), static_cast<UINT>(profile.size()));
        }
        if (SUCCEEDED(result)) {
            IWICColorContext* pointer = context.Get();
            result = target.frame->SetColorContexts(1, &pointer);
        }
    }
    return result;
}

// From our order of samples to the component's.
void PackRow(const WicFormat& format, const Picture& picture, int y, std::uint8_t* to) {
    const std::size_t size = picture.SampleBytes();
    const auto units = static_cast<std::size_t>(format.units);
    const std::uint8_t* from = picture.Row(y);
    for (int x = 0; x < picture.width; ++x, from += picture.PixelBytes()) {
        for (std::size_t unit = 0; unit < units; ++unit) {
            std::size_t channel = unit;
            if (static_cast<int>(unit) < format.colours && format.blueFirst) {
                channel = static_cast<std::size_t>(format.colours) - 1 - unit;
            }
            // One gray serves for all three colours; alpha is the last on both sides.
            if (picture.colours == 1 && format.colours == 3) {
                channel = static_cast<int>(unit) < format.colours ? 0 : 1;
            }
            std::memcpy(to, from + channel * size, size);
            to += size;
        }
    }
}

Outcome WriteRows(const WicFormat& format, const Picture& picture, bool swapped, Target& target,
                  const StopFunction& stop) {
    const std::size_t rowBytes = static_cast<std::size_t>(picture.width) *
                                 static_cast<std::size_t>(format.units) * picture.SampleBytes();
    const int rows = static_cast<int>(std::max<std::size_t>(1, kBandBytes / rowBytes));
    std::vector<std::uint8_t> band(rowBytes *
                                   static_cast<std::size_t>(std::min(rows, picture.height)));
    for (int top = 0; top < picture.height; top += rows) {
        if (stop && stop()) {
            return Outcome::Stopped;
        }
        const int count = std::min(rows, picture.height - top);
        for (int y = 0; y < count; ++y) {
            PackRow(format, picture, top + y, band.data() + static_cast<std::size_t>(y) * rowBytes);
        }
        const std::size_t size = rowBytes * static_cast<std::size_t>(count);
        if (swapped) {
            SwapBytes(band.data(), size);
        }
        if (FAILED(target.frame->WritePixels(static_cast<UINT>(count), static_cast<UINT>(rowBytes),
                                             static_cast<UINT>(size), band.data()))) {
            return Outcome::Failed;
        }
    }
    return SUCCEEDED(target.frame->Commit()) && SUCCEEDED(target.encoder->Commit())
               ? Outcome::Done
               : Outcome::Failed;
}

bool TakeBytes(IStream* stream, std::vector<std::uint8_t>& bytes) {
    STATSTG status{};
    const LARGE_INTEGER start{};
    if (FAILED(stream->Stat(&status, STATFLAG_NONAME)) ||
        FAILED(stream->Seek(start, STREAM_SEEK_SET, nullptr))) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(status.cbSize.QuadPart));
    std::size_t at = 0;
    while (at < bytes.size()) {
        const auto part = static_cast<ULONG>(std::min(bytes.size() - at, kBandBytes));
        ULONG read = 0;
        if (FAILED(stream->Read(&bytes[at], part, &read)) || read == 0) {
            return false;
        }
        at += read;
    }
    return true;
}

struct Encoding {
    const GUID& container;
    const WicFormat& format;
    bool withProfile;
    bool swapped;
};

// Packs the picture in memory. NoSuchFormat: the component would write other pixels than these.
Outcome Encode(const WicFactory& factory, const Encoding& encoding, const Picture& picture,
               const StopFunction& stop, std::vector<std::uint8_t>& bytes) {
    Target target;
    if (FAILED(Open(factory, encoding.container, target)) ||
        FAILED(Describe(factory, picture, encoding.withProfile, target))) {
        return Outcome::Failed;
    }
    GUID granted = *encoding.format.id;
    if (FAILED(target.frame->SetPixelFormat(&granted)) || granted != *encoding.format.id) {
        return Outcome::NoSuchFormat;
    }
    const Outcome outcome = WriteRows(encoding.format, picture, encoding.swapped, target, stop);
    return outcome == Outcome::Done && !TakeBytes(target.stream.Get(), bytes) ? Outcome::Failed
                                                                              : outcome;
}

// See ReadsPngSwapped: the same question for writing.
bool WritesPngSwapped(const WicFactory& factory) {
    constexpr std::uint16_t kProbeSample = 0x0102;
    Picture pixel;
    pixel.width = 1;
    pixel.height = 1;
    pixel.colours = 1;
    pixel.type = SampleType::UInt16;
    pixel.samples = {0x02, 0x01};  // the sample in the machine's byte order
    const Encoding encoding{GUID_ContainerFormatPng, *FindWicFormat(pixel), false, false};
    std::vector<std::uint8_t> bytes;
    std::uint16_t sample = kProbeSample;
    if (Encode(factory, encoding, pixel, {}, bytes) != Outcome::Done ||
        !ReadFirstSample(factory, bytes.data(), bytes.size(), sample)) {
        return false;
    }
    return (sample != kProbeSample) != ReadsPngSwapped(factory);
}

PictureResult Store(const std::filesystem::path& path, AtomicFile& file,
                    const std::vector<std::uint8_t>& bytes) {
    if (!file.Write(bytes.data(), bytes.size())) {
        return CannotWrite(path, file.WriteFailure());
    }
    return {};
}

}  // namespace

PictureResult WritePng(const std::filesystem::path& path, AtomicFile& file, const Picture& picture,
                       const StopFunction& stop) {
    const WicFactory factory;
    Picture shape;
    shape.type = picture.type;
    shape.colours = picture.alpha ? 3 : picture.colours;
    shape.alpha = picture.alpha;
    Outcome outcome = Outcome::Failed;
    std::vector<std::uint8_t> bytes;
    if (factory.IsThere()) {
        const bool swapped = picture.type == SampleType::UInt16 && WritesPngSwapped(factory);
        const Encoding encoding{GUID_ContainerFormatPng, *FindWicFormat(shape), false, swapped};
        outcome = Encode(factory, encoding, picture, stop, bytes);
    }
    switch (outcome) {
        case Outcome::Stopped:
            return Stopped(path);
        case Outcome::NoSuchFormat:
        case Outcome::Failed:
            return CannotWrite(path, "the imaging component of this system cannot pack it");
        case Outcome::Done:
            break;
    }
    return Store(path, file, DescribePng(bytes, picture));
}

PictureResult WriteTiff(const std::filesystem::path& path, AtomicFile& file, const Picture& picture,
                        const StopFunction& stop) {
    const WicFactory factory;
    const WicFormat* const format = FindWicFormat(picture);
    Outcome outcome = Outcome::NoSuchFormat;
    std::vector<std::uint8_t> bytes;
    if (factory.IsThere() && format != nullptr && picture.samples.size() < kLargestTiff) {
        const Encoding encoding{GUID_ContainerFormatTiff, *format, true, false};
        outcome = Encode(factory, encoding, picture, stop, bytes);
    }
    switch (outcome) {
        case Outcome::Stopped:
            return Stopped(path);
        case Outcome::NoSuchFormat:
        case Outcome::Failed:
            return WritePlainTiff(path, file, picture, stop);
        case Outcome::Done:
            break;
    }
    return Store(path, file, bytes);
}

}  // namespace mv::host
