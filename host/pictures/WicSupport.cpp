// Defines the GUIDs that the headers below declare.
#include <initguid.h>

#include "pictures/WicSupport.h"

#include <cstdio>

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

}  // namespace mv::host
