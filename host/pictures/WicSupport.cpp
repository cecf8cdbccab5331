// Defines the GUIDs that the headers below declare.
#include <initguid.h>

#include "pictures/WicSupport.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace mv::host {
namespace {

constexpr SampleType k8 = SampleType::UInt8;
constexpr SampleType k16 = SampleType::UInt16;
constexpr SampleType kF = SampleType::Float32;

// In the order in which a writer tries them.
const WicFormat kFormats[] = {
    {&GUID_WICPixelFormat8bppGray, k8, 1, false, false, 1, false},
    {&GUID_WICPixelFormat16bppGray, k16, 1, false, false, 1, false},
    {&GUID_WICPixelFormat32bppGrayFloat, kF, 1, false, false, 1, false},
    {&GUID_WICPixelFormat24bppBGR, k8, 3, false, false, 3, true},
    {&GUID_WICPixelFormat24bppRGB, k8, 3, false, false, 3, false},
    {&GUID_WICPixelFormat32bppBGR, k8, 3, false, false, 4, true},
    {&GUID_WICPixelFormat32bppBGRA, k8, 3, true, false, 4, true},
    {&GUID_WICPixelFormat32bppPBGRA, k8, 3, true, true, 4, true},
    {&GUID_WICPixelFormat32bppRGBA, k8, 3, true, false, 4, false},
    {&GUID_WICPixelFormat32bppPRGBA, k8, 3, true, true, 4, false},
    {&GUID_WICPixelFormat48bppRGB, k16, 3, false, false, 3, false},
    {&GUID_WICPixelFormat48bppBGR, k16, 3, false, false, 3, true},
    {&GUID_WICPixelFormat64bppRGBA, k16, 3, true, false, 4, false},
    {&GUID_WICPixelFormat64bppBGRA, k16, 3, true, false, 4, true},
    {&GUID_WICPixelFormat64bppPRGBA, k16, 3, true, true, 4, false},
    {&GUID_WICPixelFormat96bppRGBFloat, kF, 3, false, false, 3, false},
    {&GUID_WICPixelFormat128bppRGBFloat, kF, 3, false, false, 4, false},
    {&GUID_WICPixelFormat128bppRGBAFloat, kF, 3, true, false, 4, false},
    {&GUID_WICPixelFormat128bppPRGBAFloat, kF, 3, true, true, 4, false},
};

constexpr std::size_t kBandBytes = std::size_t{1} << 24;

constexpr std::uint16_t kProbeSample = 0x0102;
constexpr std::uint16_t kSwappedSample = 0x0201;

// One gray pixel of 16 bits with the sample 0x0102: as PNG, and as TIFF with the most significant
// byte first.
constexpr std::uint8_t kProbePng[] = {
    0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00, 0x00, 0x0D, 0x49, 0x48,
    0x44, 0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x10, 0x00, 0x00, 0x00,
    0x00, 0x6A, 0xEE, 0x47, 0x16, 0x00, 0x00, 0x00, 0x0B, 0x49, 0x44, 0x41, 0x54, 0x78,
    0xDA, 0x63, 0x60, 0x64, 0x02, 0x00, 0x00, 0x07, 0x00, 0x04, 0xE5, 0xED, 0x94, 0xCF,
    0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82};
constexpr std::uint8_t kProbeTiff[] = {
    0x4D, 0x4D, 0x00, 0x2A, 0x00, 0x00, 0x00, 0x0C, 0x01, 0x02, 0x00, 0x00, 0x00, 0x09, 0x01, 0x00,
    0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, 0x01, 0x00, 0x00, 0x01, 0x01, 0x00, 0x03, 0x00, 0x00,
    0x00, 0x01, 0x00, 0x01, 0x00, 0x00, 0x01, 0x02, 0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, 0x10,
    0x00, 0x00, 0x01, 0x03, 0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, 0x01, 0x00, 0x00, 0x01, 0x06,
    0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, 0x01, 0x00, 0x00, 0x01, 0x11, 0x00, 0x04, 0x00, 0x00,
    0x00, 0x01, 0x00, 0x00, 0x00, 0x08, 0x01, 0x15, 0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, 0x01,
    0x00, 0x00, 0x01, 0x16, 0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, 0x01, 0x00, 0x00, 0x01, 0x17,
    0x00, 0x04, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00};

// From the component's order of samples to ours.
void UnpackRow(const WicFormat& format, const std::uint8_t* from, std::uint8_t* to,
               const Picture& picture) {
    const std::size_t size = picture.SampleBytes();
    const auto units = static_cast<std::size_t>(format.units);
    for (int x = 0; x < picture.width; ++x, from += units * size) {
        for (int c = 0; c < picture.Channels(); ++c, to += size) {
            auto unit = static_cast<std::size_t>(c);
            if (c >= picture.colours) {
                unit = units - 1;  // alpha
            } else if (format.blueFirst) {
                unit = static_cast<std::size_t>(format.colours - 1 - c);
            }
            std::memcpy(to, from + unit * size, size);
        }
    }
}

}  // namespace

WicFactory::WicFactory() : initialized_(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {
    CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                     IID_PPV_ARGS(factory_.Cell()));
}

WicFactory::~WicFactory() {
    { const ComPointer<IWICImagingFactory> last(std::move(factory_)); }
    if (SUCCEEDED(initialized_)) {
        CoUninitialize();
    }
}

const WicFormat* FindWicFormat(const GUID& id) {
    for (const WicFormat& format : kFormats) {
        if (*format.id == id) {
            return &format;
        }
    }
    return nullptr;
}

const WicFormat* FindWicFormat(const Picture& picture) {
    for (const WicFormat& format : kFormats) {
        if (format.type == picture.type && format.colours == picture.colours &&
            format.alpha == picture.alpha && !format.premultiplied) {
            return &format;
        }
    }
    return nullptr;
}

std::string HexText(HRESULT result) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08lX", static_cast<unsigned long>(result));
    return text;
}

WicBand::WicBand(const WicFormat& format, const Picture& picture)
    : rowBytes(static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(format.units) *
               picture.SampleBytes()),
      rows(static_cast<int>(std::max<std::size_t>(1, kBandBytes / rowBytes))),
      bytes(rowBytes * static_cast<std::size_t>(std::min(rows, picture.height))) {}

HRESULT CopyWicPixels(IWICBitmapSource* source, const WicFormat& format, Picture& picture,
                      const StopFunction& stop, bool& stopped) {
    WicBand band(format, picture);
    for (int top = 0; top < picture.height; top += band.rows) {
        stopped = stop && stop();
        if (stopped) {
            return S_FALSE;
        }
        const int count = std::min(band.rows, picture.height - top);
        const WICRect rect{0, top, picture.width, count};
        const HRESULT result = source->CopyPixels(
            &rect, static_cast<UINT>(band.rowBytes),
            static_cast<UINT>(band.rowBytes * static_cast<std::size_t>(count)), band.bytes.data());
        if (FAILED(result)) {
            return result;
        }
        for (int y = 0; y < count; ++y) {
            UnpackRow(format, band.Row(y), picture.Row(top + y), picture);
        }
    }
    return S_OK;
}

bool ReadFirstSample(const WicFactory& factory, const std::uint8_t* bytes, std::size_t size,
                     std::uint16_t& sample) {
    ComPointer<IWICStream> stream;
    ComPointer<IWICBitmapDecoder> decoder;
    ComPointer<IWICBitmapFrameDecode> frame;
    const WICRect rect{0, 0, 1, 1};
    std::vector<std::uint8_t> copy(bytes, bytes + size);  // the component wants it writable
    std::uint8_t pixel[8] = {};
    const bool read =
        SUCCEEDED(factory->CreateStream(stream.Cell())) &&
        SUCCEEDED(stream->InitializeFromMemory(copy.data(), static_cast<DWORD>(copy.size()))) &&
        SUCCEEDED(factory->CreateDecoderFromStream(
            stream.Get(), nullptr, WICDecodeMetadataCacheOnDemand, decoder.Cell())) &&
        SUCCEEDED(decoder->GetFrame(0, frame.Cell())) &&
        SUCCEEDED(frame->CopyPixels(&rect, sizeof pixel, sizeof pixel, pixel));
    std::memcpy(&sample, pixel, sizeof sample);
    return read;
}

bool ReadsPngSwapped(const WicFactory& factory) {
    std::uint16_t sample = kProbeSample;
    return ReadFirstSample(factory, kProbePng, sizeof kProbePng, sample) &&
           sample == kSwappedSample;
}

bool ReadsBigEndianTiffSwapped(const WicFactory& factory) {
    std::uint16_t sample = kProbeSample;
    return ReadFirstSample(factory, kProbeTiff, sizeof kProbeTiff, sample) &&
           sample == kSwappedSample;
}

void SwapBytes(std::uint8_t* samples, std::size_t size) {
    for (std::size_t at = 0; at + 2 <= size; at += 2) {
        std::swap(samples[at], samples[at + 1]);
    }
}

}  // namespace mv::host
