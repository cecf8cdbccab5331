// The one run-time switch between the host's untyped record and the typed renders.
#include <cstdlib>

#include "diagnostics/Log.h"
#include "frame/PixelShapes.h"
#include "frame/pfFilterRadialBlur.h"

namespace mv {
namespace {

// What of the record decides on the shape.
struct Shape {
    std::int32_t colors = 0;
    bool alpha = false;
};

Shape CountPlanes(const hostapi::FilterRecord& record) {
    Shape shape{record.inLayerPlanes, record.inTransparencyMask != 0};
    if (shape.alpha) {
        shape.alpha = record.planes >= shape.colors + 1;
        if (shape.colors == 0) {
            shape.colors = record.planes;
        }
    } else if (shape.colors == 0) {
        shape.colors = record.inNonLayerPlanes != 0 ? record.inNonLayerPlanes : record.planes;
    }
    return shape;
}

// False for a mode that is not served.
bool CutToMode(std::int16_t imageMode, Shape& shape) {
    switch (imageMode) {
        case hostapi::plugInModeGrayScale:
        case hostapi::plugInModeGray16:
        case hostapi::plugInModeGray32:
            shape.colors = shape.colors >= 2 ? 1 : shape.colors;
            return true;
        case hostapi::plugInModeRGBColor:
        case hostapi::plugInModeMultichannel:
        case hostapi::plugInModeRGB48:
        case hostapi::plugInModeDeepMultichannel:
        case hostapi::plugInModeRGB96:
            shape.colors = shape.colors > 3 ? 3 : shape.colors;
            return true;
        default:
            return false;
    }
}

// Every shape has its own instantiation; hosts' rows are read by the pixel types' rules.
class ShapeSwitch {
public:
    ShapeSwitch(pfFilterRadialBlur& filter, hostapi::FilterRecord& record)
        : filter_(filter), record_(record) {}

    std::int32_t Run(const Shape& shape) {
        // A pixel must hold what the chosen layout reads.
        if (shape.colors < 1 || shape.colors > 3 ||
            record_.planes < shape.colors + (shape.alpha ? 1 : 0)) {
            return filter_.StatusOk();
        }
        switch (record_.depth) {
            case 0:
            case 8:
                return ByLayout<unsigned char, 255>(shape);
            case 16:
                return ByLayout<unsigned short, 32768>(shape);
            case 32:
                return ByLayout<float, 1>(shape);
            default:
                return filter_.StatusOk();
        }
    }

private:
    template <class T, int white>
    std::int32_t ByLayout(const Shape& shape) {
        switch (shape.colors) {
            case 1:
                return shape.alpha ? Render<GrayAlphaPixel<T, white>>()
                                   : Render<GrayPixel<T, white>>();
            case 2:
                return shape.alpha ? Render<TwoChannelAlphaPixel<T, white>>()
                                   : Render<TwoChannelPixel<T, white>>();
            default:
                return shape.alpha ? Render<RGBAlphaPixel<T, white>>()
                                   : Render<RGBPixel<T, white>>();
        }
    }

    template <class HostPixel>
    std::int32_t Render() {
        using Channel = typename HostPixel::Channel;
        auto input = Describe<HostImage<HostPixel>>(record_.inData, record_.inRowBytes);
        auto output = Describe<HostImage<HostPixel>>(record_.outData, record_.outRowBytes);
        auto mask = Describe<MaskImage>(record_.maskData, record_.maskRowBytes);
        input.dynamic_pixel_size = record_.planes * static_cast<std::int32_t>(sizeof(Channel));
        output.dynamic_pixel_size = input.dynamic_pixel_size;
        input.is_connected = true;
        output.is_connected = true;
        mask.dynamic_pixel_size = 1;
        if (!CanCover(mask)) {
            mask.data = nullptr;
        }
        mask.is_connected = mask.data != nullptr;
        // Nothing to render, or a host that delivered nothing, or less than it says.
        if (input.width <= 0 || input.height <= 0 || input.data == nullptr ||
            output.data == nullptr || IsSmaller(record_.inRect)) {
            return filter_.StatusOk();
        }
        return filter_.Render<HostPixel>(input, output, mask, &record_);
    }

    // A rectangle, as it stands after the host has served the request, that does not hold the
    // image.
    bool IsSmaller(const hostapi::Rect& rect) const {
        const int width = rect.right - rect.left;
        const int height = rect.bottom - rect.top;
        const bool isEmpty = width == 0 && height == 0;
        return !isEmpty && (width < record_.outRect.right - record_.outRect.left ||
                            height < record_.outRect.bottom - record_.outRect.top);
    }

    // A mask that ends before the image does counts as none, like one that was promised and not
    // delivered. Without a promise its rectangle was not ours to set and says nothing.
    bool CanCover(const MaskImage& mask) const {
        return std::abs(std::int64_t{mask.row_bytes}) >= mask.width &&
               (record_.haveMask == 0 || !IsSmaller(record_.maskRect));
    }

    template <class Image>
    Image Describe(void* data, std::int32_t rowBytes) const {
        Image image;
        image.width = record_.outRect.right - record_.outRect.left;
        image.height = record_.outRect.bottom - record_.outRect.top;
        image.row_bytes = rowBytes;
        image.data = static_cast<unsigned char*>(data);
        return image;
    }

    pfFilterRadialBlur& filter_;
    hostapi::FilterRecord& record_;
};

}  // namespace

std::int32_t pfFilterRadialBlur::SelectRenderTemplate(hostapi::FilterRecord* record) {
    WriteLog(kTrace, "SelectRenderTemplate()");
    const LogScope scope;
    BeginRender();
    Shape shape = CountPlanes(*record);
    if (!CutToMode(record->imageMode, shape)) {
        return StatusOk();
    }
    return static_cast<std::int16_t>(ShapeSwitch(*this, *record).Run(shape));
}

}  // namespace mv
