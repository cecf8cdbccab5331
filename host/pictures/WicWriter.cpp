// Writes PNG files through Windows' own imaging component. It has no gray with alpha, which becomes
// three equal colours. TIFF files are written without it, not packed: it lacks shapes (which ones
// differs between systems), knows resolutions in inches only and adds one where there is none.
#include <algorithm>
#include <cstring>
#include <vector>

#include "pictures/PictureSupport.h"
#include "pictures/PlainTiff.h"
#include "pictures/PngChunks.h"
#include "pictures/WicSupport.h"

namespace mv::host {
namespace {

constexpr std::size_t kPartBytes = std::size_t{1} << 24;

enum class Outcome { Done, Failed, Stopped };

struct Target {
    ComPointer<IStream> stream;  // in memory
    ComPointer<IWICBitmapEncoder> encoder;
    ComPointer<IWICBitmapFrameEncode> frame;
};

HRESULT Open(const WicFactory& factory, const Picture& picture, Target& target) {
    HRESULT result = CreateStreamOnHGlobal(nullptr, TRUE, target.stream.Cell());
    if (SUCCEEDED(result)) {
        result = factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, target.encoder.Cell());
    }
    if (SUCCEEDED(result)) {
        result = target.encoder->Initialize(target.stream.Get(), WICBitmapEncoderNoCache);
    }
    if (SUCCEEDED(result)) {
        result = target.encoder->CreateNewFrame(target.frame.Cell(), nullptr);
    }
    if (SUCCEEDED(result)) {
        result = target.frame->Initialize(nullptr);
    }
    if (SUCCEEDED(result)) {
        result = target.frame->SetSize(static_cast<UINT>(picture.width),
                                       static_cast<UINT>(picture.height));
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
    WicBand band(format, picture);
    for (int top = 0; top < picture.height; top += band.rows) {
        if (stop && stop()) {
            return Outcome::Stopped;
        }
        const int count = std::min(band.rows, picture.height - top);
        for (int y = 0; y < count; ++y) {
            PackRow(format, picture, top + y, band.Row(y));
        }
        const std::size_t size = band.rowBytes * static_cast<std::size_t>(count);
        if (swapped) {
            SwapBytes(band.bytes.data(), size);
        }
        if (FAILED(target.frame->WritePixels(static_cast<UINT>(count),
                                             static_cast<UINT>(band.rowBytes),
                                             static_cast<UINT>(size), band.bytes.data()))) {
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
        const auto part = static_cast<ULONG>(std::min(bytes.size() - at, kPartBytes));
        ULONG read = 0;
        if (FAILED(stream->Read(&bytes[at], part, &read)) || read == 0) {
            return false;
        }
        at += read;
    }
    return true;
}

// Packs the picture in memory.
Outcome Encode(const WicFactory& factory, const WicFormat& format, const Picture& picture,
               bool swapped, const StopFunction& stop, std::vector<std::uint8_t>& bytes) {
    Target target;
    GUID granted = *format.id;
    if (FAILED(Open(factory, picture, target)) || FAILED(target.frame->SetPixelFormat(&granted)) ||
        granted != *format.id) {
        return Outcome::Failed;
    }
    const Outcome outcome = WriteRows(format, picture, swapped, target, stop);
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
    std::vector<std::uint8_t> bytes;
    std::uint16_t sample = kProbeSample;
    if (Encode(factory, *FindWicFormat(pixel), pixel, false, {}, bytes) != Outcome::Done ||
        !ReadFirstSample(factory, bytes.data(), bytes.size(), sample)) {
        return false;
    }
    return (sample != kProbeSample) != ReadsPngSwapped(factory);
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
        outcome = Encode(factory, *FindWicFormat(shape), picture, swapped, stop, bytes);
    }
    switch (outcome) {
        case Outcome::Stopped:
            return Stopped(path);
        case Outcome::Failed:
            return CannotWrite(path, "the imaging component of this system cannot pack it");
        case Outcome::Done:
            break;
    }
    bytes = DescribePng(bytes, picture);
    if (!file.Write(bytes.data(), bytes.size())) {
        return CannotWrite(path, file.WriteFailure());
    }
    return {};
}

PictureResult WriteTiff(const std::filesystem::path& path, AtomicFile& file, const Picture& picture,
                        const StopFunction& stop) {
    return WritePlainTiff(path, file, picture, stop);
}

}  // namespace mv::host
