// Windows' own imaging component: what its reader and writer share.
#pragma once

#include <windows.h>
// Behind windows.h, on which they depend.
#include <objbase.h>
#include <wincodec.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "pictures/PictureFile.h"

namespace mv::host {

// Owns one reference to a COM object.
template <class Interface>
class ComPointer {
public:
    ComPointer() = default;
    ComPointer(const ComPointer&) = delete;
    ComPointer& operator=(const ComPointer&) = delete;
    ComPointer(ComPointer&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
    ~ComPointer() {
        if (pointer_ != nullptr) {
            pointer_->Release();
        }
    }

    Interface* operator->() const { return pointer_; }
    Interface* Get() const { return pointer_; }
    // For functions that store a new reference; the pointer must be empty.
    Interface** Cell() { return &pointer_; }

private:
    Interface* pointer_ = nullptr;
};

// COM on this thread for the object's life, with the component's factory.
class WicFactory {
public:
    WicFactory();
    ~WicFactory();
    WicFactory(const WicFactory&) = delete;
    WicFactory& operator=(const WicFactory&) = delete;

    bool IsThere() const { return factory_.Get() != nullptr; }
    IWICImagingFactory* operator->() const { return factory_.Get(); }

private:
    HRESULT initialized_;
    ComPointer<IWICImagingFactory> factory_;
};

// How a pixel format of the component lies in memory.
struct WicFormat {
    const GUID* id;
    SampleType type;
    int colours;
    bool alpha;
    bool premultiplied;
    int units;  // samples of a pixel, an unused one among them
    bool blueFirst;
};

// Null for a format that is none of whole samples in gray or RGB.
const WicFormat* FindWicFormat(const GUID& id);

// The straight format of a picture's own shape that writers know best, or null.
const WicFormat* FindWicFormat(const Picture& picture);

// As many rows at a time as fit into some megabytes.
struct WicBand {
    WicBand(const WicFormat& format, const Picture& picture);

    std::size_t rowBytes;
    int rows;
    std::vector<std::uint8_t> bytes;

    std::uint8_t* Row(int row) { return bytes.data() + static_cast<std::size_t>(row) * rowBytes; }
};

std::string HexText(HRESULT result);

// Copies the source's pixels in bands into the picture, whose shape says which of the source's
// samples are kept: gray takes one of three equal colours, and alpha may be left away.
HRESULT CopyWicPixels(IWICBitmapSource* source, const WicFormat& format, Picture& picture,
                      const StopFunction& stop, bool& stopped);

// The first 16-bit sample of a picture file in memory; false when it cannot be read.
bool ReadFirstSample(const WicFactory& factory, const std::uint8_t* bytes, std::size_t size,
                     std::uint16_t& sample);

// Some systems' components (Wine's, as of version 8) confuse the two bytes of a sample. That would
// spoil a picture silently, so it is found out with pictures of one pixel.
bool ReadsPngSwapped(const WicFactory& factory);
bool ReadsBigEndianTiffSwapped(const WicFactory& factory);
void SwapBytes(std::uint8_t* samples, std::size_t size);

}  // namespace mv::host
