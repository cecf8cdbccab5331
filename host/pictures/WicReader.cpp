// Reads PNG and TIFF files through Windows' own imaging component. TIFF files that are not packed
// are read without it: it does not know all of their shapes, such as gray with transparency.
#include <string>
#include <vector>

#include "pictures/PictureSupport.h"
#include "pictures/PlainTiff.h"
#include "pictures/PngChunks.h"
#include "pictures/WicSupport.h"

namespace mv::host {
namespace {

constexpr std::uint64_t kLargestDeflateRatio = 1032;

struct Source {
    ComPointer<IWICBitmapDecoder> decoder;
    ComPointer<IWICBitmapFrameDecode> frame;
    ComPointer<IWICFormatConverter> converter;
    IWICBitmapSource* pixels = nullptr;  // the frame, or the converter on top of it
    const WicFormat* format = nullptr;
};

HRESULT Open(const std::filesystem::path& path, const WicFactory& factory, Source& source) {
    HRESULT result = factory->CreateDecoderFromFilename(
        path.c_str(), nullptr, GENERIC_READ, WICDecodeMetadataCacheOnDemand, source.decoder.Cell());
    if (SUCCEEDED(result)) {
        result = source.decoder->GetFrame(0, source.frame.Cell());
    }
    GUID id{};
    if (SUCCEEDED(result)) {
        result = source.frame->GetPixelFormat(&id);
    }
    if (SUCCEEDED(result)) {
        source.pixels = source.frame.Get();
        source.format = FindWicFormat(id);
    }
    return result;
}

// Palettes and gray of less than a byte: this format is the one that every version converts to.
HRESULT ConvertToBgra(const WicFactory& factory, Source& source) {
    const GUID& target = GUID_WICPixelFormat32bppBGRA;
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

bool PaletteHasAlpha(const WicFactory& factory, const Source& source) {
    ComPointer<IWICPalette> palette;
    BOOL alpha = FALSE;
    return SUCCEEDED(factory->CreatePalette(palette.Cell())) &&
           SUCCEEDED(source.frame->CopyPalette(palette.Get())) &&
           SUCCEEDED(palette->HasAlpha(&alpha)) && alpha != FALSE;
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

PictureError DamagedPng(const std::filesystem::path& path, const std::string& detail) {
    const std::string text = detail.empty() ? std::string() : " (" + detail + ")";
    return Unsupported(path, "is a damaged PNG picture" + text + "; get a good copy of it");
}

PictureError NoComponent(const std::filesystem::path& path) {
    return CannotRead(path, "the imaging component of Windows is missing");
}

// What the component knows about a PNG file, and what it keeps to itself.
PictureResult OpenPng(const std::filesystem::path& path, const WicFactory& factory,
                      const PngFacts& facts, Source& source, Picture& picture) {
    HRESULT result = Open(path, factory, source);
    const bool converts = SUCCEEDED(result) && source.format == nullptr;
    if (converts) {
        result = ConvertToBgra(factory, source);
    }
    if (FAILED(result)) {
        return DamagedPng(path, HexText(result));
    }
    // The component has no gray with alpha and gives colours that are all the same.
    const bool gray = facts.colorType == 0 || facts.colorType == 4;
    picture.type = source.format->type;
    picture.colours = gray ? 1 : 3;
    picture.alpha =
        converts ? facts.colorType == 3 && PaletteHasAlpha(factory, source) : source.format->alpha;
    picture.color = facts.color;
    picture.resolution = facts.resolution;
    TakeProfile(factory, source.frame.Get(), picture);
    return {};
}

PictureResult JudgePng(const std::filesystem::path& path, PngFacts& facts) {
    if (!ReadPngFacts(path, facts)) {
        return DamagedPng(path, "");
    }
    if (PictureResult failure = CheckSize(path, facts.width, facts.height); failure) {
        return failure;
    }
    // A few bytes that claim to be thousands of megapixels are not worth the memory.
    std::error_code error;
    const std::uint64_t bits =
        std::uint64_t{facts.width} * facts.height * static_cast<std::uint64_t>(facts.bits);
    if (bits / 8 / kLargestDeflateRatio > std::filesystem::file_size(path, error)) {
        return DamagedPng(path, kTooSmall);
    }
    return {};
}

PictureError NotServed(const std::filesystem::path& path) {
    return Unsupported(path,
                       "is packed, and of a kind that the imaging component of this system "
                       "does not unpack; save it without compression");
}

// The component unpacks; what it says about the pixels must be what the tags say.
PictureResult ReadPackedTiff(const std::filesystem::path& path, const TiffFacts& facts,
                             Picture& picture, const StopFunction& stop) {
    const WicFactory factory;
    if (!factory.IsThere()) {
        return NoComponent(path);
    }
    Source source;
    const HRESULT opened = Open(path, factory, source);
    if (opened == WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT) {
        return NotServed(path);
    }
    if (FAILED(opened)) {
        return DamagedTiff(path, HexText(opened));
    }
    const WicFormat* const format = source.format;
    if (format == nullptr || format->type != picture.type || format->colours != picture.colours ||
        format->alpha != picture.alpha) {
        return NotServed(path);
    }
    bool stopped = false;
    const HRESULT copied = CopyWicPixels(source.pixels, *format, picture, stop, stopped);
    if (FAILED(copied)) {
        return DamagedTiff(path, HexText(copied));
    }
    if (facts.bigEndian && picture.type == SampleType::UInt16 &&
        ReadsBigEndianTiffSwapped(factory)) {
        SwapBytes(picture.samples.data(), picture.samples.size());
    }
    // Gray was turned around already.
    TiffLayout layout = facts.layout;
    layout.photometric = tiff::kBlackIsZero;
    layout.extraSample = format->premultiplied ? tiff::kMultipliedAlpha : 0;
    NormalizeTiff(layout, picture);
    return stopped ? PictureResult(Stopped(path)) : PictureResult();
}

}  // namespace

PictureResult ReadPng(const std::filesystem::path& path, Picture& picture,
                      const StopFunction& stop) {
    PngFacts facts;
    if (PictureResult failure = JudgePng(path, facts); failure) {
        return failure;
    }
    const WicFactory factory;
    if (!factory.IsThere()) {
        return NoComponent(path);
    }
    Source source;
    if (PictureResult failure = OpenPng(path, factory, facts, source, picture); failure) {
        return failure;
    }
    if (PictureResult failure = MakeRoom(path, facts.width, facts.height, picture); failure) {
        return failure;
    }
    bool stopped = false;
    const HRESULT result = CopyWicPixels(source.pixels, *source.format, picture, stop, stopped);
    if (FAILED(result)) {
        return DamagedPng(path, HexText(result));
    }
    if (picture.type == SampleType::UInt16 && ReadsPngSwapped(factory)) {
        SwapBytes(picture.samples.data(), picture.samples.size());
    }
    if (source.format->premultiplied) {
        Unpremultiply(picture);
    }
    return stopped ? PictureResult(Stopped(path)) : PictureResult();
}

PictureResult ReadTiff(const std::filesystem::path& path, Picture& picture,
                       const StopFunction& stop) {
    TiffFacts facts;
    if (PictureResult failure = ReadTiffFacts(path, facts); failure) {
        return failure;
    }
    if (PictureResult failure = JudgeTiff(path, facts.layout, picture); failure) {
        return failure;
    }
    if (PictureResult failure = MakeRoom(path, facts.layout.width, facts.layout.height, picture);
        failure) {
        return failure;
    }
    picture.resolution = facts.resolution;
    picture.color.iccProfile = facts.iccProfile;
    if (facts.layout.compression != tiff::kNotPacked) {
        return ReadPackedTiff(path, facts, picture, stop);
    }
    if (PictureResult failure = ReadPlainTiff(path, facts, picture, stop); failure) {
        return failure;
    }
    NormalizeTiff(facts.layout, picture);
    return {};
}

}  // namespace mv::host
