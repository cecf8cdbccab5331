// Reads PNG and TIFF files through Windows' own imaging component. What it cannot read, such as
// TIFF pictures in gray with transparency, is refused with its own error number.
#include <algorithm>
#include <cstring>
#include <vector>

#include "pictures/PictureSupport.h"
#include "pictures/PngChunks.h"
#include "pictures/WicSupport.h"

namespace mv::host {
namespace {

constexpr std::size_t kBandBytes = std::size_t{1} << 24;
constexpr std::uint64_t kLargestDeflateRatio = 1032;

struct Source {
    ComPointer<IWICBitmapDecoder> decoder;
    ComPointer<IWICBitmapFrameDecode> frame;
    ComPointer<IWICFormatConverter> converter;
    IWICBitmapSource* pixels = nullptr;  // the frame, or the converter on top of it
    const WicFormat* format = nullptr;
};

PictureResult Unreadable(const std::filesystem::path& path, HRESULT result) {
    return Unsupported(path,
                       "is damaged, or of a kind that the imaging component of this system "
                       "cannot read (" +
                           HexText(result) + "); save it in gray or RGB with 8 or 16 bits");
}

bool IsCmyk(const GUID& id) {
    return id == GUID_WICPixelFormat32bppCMYK || id == GUID_WICPixelFormat64bppCMYK ||
           id == GUID_WICPixelFormat40bppCMYKAlpha || id == GUID_WICPixelFormat80bppCMYKAlpha;
}

bool IsSmallGray(const GUID& id) {
    return id == GUID_WICPixelFormatBlackWhite || id == GUID_WICPixelFormat2bppGray ||
           id == GUID_WICPixelFormat4bppGray;
}

bool IsPalette(const GUID& id) {
    return id == GUID_WICPixelFormat1bppIndexed || id == GUID_WICPixelFormat2bppIndexed ||
           id == GUID_WICPixelFormat4bppIndexed || id == GUID_WICPixelFormat8bppIndexed;
}

bool PaletteHasAlpha(const WicFactory& factory, IWICBitmapFrameDecode* frame) {
    ComPointer<IWICPalette> palette;
    BOOL alpha = FALSE;
    return SUCCEEDED(factory->CreatePalette(palette.Cell())) &&
           SUCCEEDED(frame->CopyPalette(palette.Get())) && SUCCEEDED(palette->HasAlpha(&alpha)) &&
           alpha != FALSE;
}

HRESULT Convert(const WicFactory& factory, Source& source, const GUID& target) {
    HRESULT result = factory->CreateFormatConverter(source.converter.Cell());
    if (SUCCEEDED(result)) {
        result = source.converter->Initialize(source.frame.Get(), target, WICBitmapDitherTypeNone,
                                              nullptr, 0.0, WICBitmapPaletteTypeCustom);
    }
    if (SUCCEEDED(result)) {
        source.pixels = source.converter.Get();
        source.format = FindWicFormat(target);
    }
    return result;
}

// Opens the first frame and settles how its pixels are fetched.
PictureResult OpenSource(const std::filesystem::path& path, const WicFactory& factory,
                         Source& source) {
    HRESULT result = factory->CreateDecoderFromFilename(
        path.c_str(), nullptr, GENERIC_READ, WICDecodeMetadataCacheOnDemand, source.decoder.Cell());
    if (SUCCEEDED(result)) {
        result = source.decoder->GetFrame(0, source.frame.Cell());
    }
    GUID id{};
    if (SUCCEEDED(result)) {
        result = source.frame->GetPixelFormat(&id);
    }
    if (FAILED(result)) {
        return Unreadable(path, result);
    }
    if (IsCmyk(id)) {
        return Unsupported(path,
                           "is a TIFF picture with CMYK colours; convert it to gray or RGB "
                           "first");
    }
    source.pixels = source.frame.Get();
    source.format = FindWicFormat(id);
    if (IsSmallGray(id)) {
        result = Convert(factory, source, GUID_WICPixelFormat8bppGray);
    } else if (IsPalette(id)) {
        const bool alpha = PaletteHasAlpha(factory, source.frame.Get());
        result = Convert(factory, source,
                         alpha ? GUID_WICPixelFormat32bppBGRA : GUID_WICPixelFormat24bppBGR);
    }
    if (FAILED(result) || source.format == nullptr) {
        return Unreadable(path, FAILED(result) ? result : WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT);
    }
    return {};
}

// From the component's order of samples to ours; `keep` says how many of them a pixel has.
void UnpackRow(const WicFormat& format, const std::uint8_t* from, std::uint8_t* to, int width,
               const Picture& picture) {
    const std::size_t size = picture.SampleBytes();
    const auto units = static_cast<std::size_t>(format.units);
    const int channels = picture.Channels();
    for (int x = 0; x < width; ++x, from += units * size) {
        for (int c = 0; c < channels; ++c) {
            auto unit = static_cast<std::size_t>(c);
            if (c >= picture.colours) {
                unit = units - 1;  // alpha
            } else if (format.blueFirst) {
                unit = static_cast<std::size_t>(format.colours - 1 - c);
            }
            std::memcpy(to, from + unit * size, size);
            to += size;
        }
    }
}

PictureResult CopyPixels(const std::filesystem::path& path, const Source& source, Picture& picture,
                         const StopFunction& stop) {
    const std::size_t rowBytes = static_cast<std::size_t>(picture.width) *
                                 static_cast<std::size_t>(source.format->units) *
                                 picture.SampleBytes();
    const int rows = static_cast<int>(std::max<std::size_t>(1, kBandBytes / rowBytes));
    std::vector<std::uint8_t> band(rowBytes *
                                   static_cast<std::size_t>(std::min(rows, picture.height)));
    for (int top = 0; top < picture.height; top += rows) {
        if (stop && stop()) {
            return Stopped(path);
        }
        const int count = std::min(rows, picture.height - top);
        const WICRect rect{0, top, picture.width, count};
        const HRESULT result = source.pixels->CopyPixels(
            &rect, static_cast<UINT>(rowBytes),
            static_cast<UINT>(rowBytes * static_cast<std::size_t>(count)), band.data());
        if (FAILED(result)) {
            return Unreadable(path, result);
        }
        for (int y = 0; y < count; ++y) {
            UnpackRow(*source.format, band.data() + static_cast<std::size_t>(y) * rowBytes,
                      picture.Row(top + y), picture.width, picture);
        }
    }
    return {};
}

void TakeProfile(const WicFactory& factory, IWICBitmapFrameDecode* frame, Picture& picture) {
    UINT count = 0;
    if (FAILED(frame->GetColorContexts(0, nullptr, &count)) || count == 0) {
        return;
    }
    std::vector<ComPointer<IWICColorContext>> contexts(count);
    std::vector<IWICColorContext*> pointers;
    for (ComPointer<IWICColorContext>& context : contexts) {
        if (FAILED(factory->CreateColorContext(context.Cell()))) {
            return;
        }
        pointers.push_back(context.Get());
    }
    if (FAILED(frame->GetColorContexts(count, pointers.data(), &count))) {
        return;
    }
    for (UINT i = 0; i < count; ++i) {
        WICColorContextType type = WICColorContextUninitialized;
        UINT size = 0;
        if (SUCCEEDED(pointers[i]->GetType(&type)) && type == WICColorContextProfile &&
            SUCCEEDED(pointers[i]->GetProfileBytes(0, nullptr, &size)) && size > 0) {
            picture.color.iccProfile.resize(size);
            pointers[i]->GetProfileBytes(size, picture.color.iccProfile.data(), &size);
            return;
        }
    }
}

int OrientationOf(IWICBitmapFrameDecode* frame) {
    ComPointer<IWICMetadataQueryReader> metadata;
    int orientation = 1;
    PROPVARIANT value;
    PropVariantInit(&value);
    if (SUCCEEDED(frame->GetMetadataQueryReader(metadata.Cell())) &&
        SUCCEEDED(metadata->GetMetadataByName(L"/ifd/{ushort=274}", &value))) {
        orientation = value.vt == VT_UI2 ? value.uiVal : 1;
        PropVariantClear(&value);
    }
    return orientation;
}

PictureResult ReadFrame(const std::filesystem::path& path, const WicFactory& factory,
                        Source& source, Picture& picture, const StopFunction& stop) {
    UINT width = 0;
    UINT height = 0;
    if (const HRESULT result = source.frame->GetSize(&width, &height); FAILED(result)) {
        return Unreadable(path, result);
    }
    picture.type = source.format->type;
    // The reader may have been told to drop colours or alpha that only repeat others.
    if (PictureResult failure = MakeRoom(path, width, height, picture); failure) {
        return failure;
    }
    TakeProfile(factory, source.frame.Get(), picture);
    if (PictureResult failure = CopyPixels(path, source, picture, stop); failure) {
        return failure;
    }
    if (source.format->premultiplied) {
        Unpremultiply(picture);
    }
    return {};
}

PictureResult NoComponent(const std::filesystem::path& path) {
    return CannotRead(path, "the imaging component of Windows is missing");
}

}  // namespace

PictureResult ReadPng(const std::filesystem::path& path, Picture& picture,
                      const StopFunction& stop) {
    PngFacts facts;
    if (!ReadPngFacts(path, facts)) {
        return Unsupported(path, "is a damaged PNG picture; get a good copy of it");
    }
    if (PictureResult failure = CheckSize(path, facts.width, facts.height); failure) {
        return failure;
    }
    // A few bytes that claim to be thousands of megapixels are not worth the memory.
    std::error_code error;
    const std::uint64_t bits =
        std::uint64_t{facts.width} * facts.height * static_cast<std::uint64_t>(facts.bits);
    if (bits / 8 / kLargestDeflateRatio > std::filesystem::file_size(path, error)) {
        return Unsupported(path, std::string("is a damaged PNG picture (") + kTooSmall +
                                     "); get a good copy of it");
    }
    const WicFactory factory;
    if (!factory.IsThere()) {
        return NoComponent(path);
    }
    Source source;
    if (PictureResult failure = OpenSource(path, factory, source); failure) {
        return failure;
    }
    // The component has no gray with alpha and gives colours that are all the same.
    const bool gray = facts.colorType == 0 || facts.colorType == 4;
    picture.colours = gray ? 1 : source.format->colours;
    picture.alpha = source.format->alpha;
    picture.color = facts.color;
    picture.resolution = facts.resolution;
    return ReadFrame(path, factory, source, picture, stop);
}

PictureResult ReadTiff(const std::filesystem::path& path, Picture& picture,
                       const StopFunction& stop) {
    const WicFactory factory;
    if (!factory.IsThere()) {
        return NoComponent(path);
    }
    Source source;
    if (PictureResult failure = OpenSource(path, factory, source); failure) {
        return failure;
    }
    picture.colours = source.format->colours;
    picture.alpha = source.format->alpha;
    double x = 0.0;
    double y = 0.0;
    if (SUCCEEDED(source.frame->GetResolution(&x, &y)) && x > 0.0 && y > 0.0) {
        picture.resolution = Resolution{x, y, ResolutionUnit::Inch};
    }
    if (PictureResult failure = ReadFrame(path, factory, source, picture, stop); failure) {
        return failure;
    }
    ApplyOrientation(picture, OrientationOf(source.frame.Get()));
    return {};
}

}  // namespace mv::host
