// pfFilter: what is asked of the host, the image and a colour.
#include "diagnostics/Log.h"
#include "frame/pfFilter.h"
#include "interface/pfPreview.h"

namespace mv {
namespace {

constexpr std::int16_t kOverhangPadding = 255;
constexpr double kByteScale = 0.00392156862745098;

// The luminance weights divided by 255.
constexpr double kGrayOfByteRed = 0.0011477952392156864;
constexpr double kGrayOfByteGreen = 0.002165292729411765;
constexpr double kGrayOfByteBlue = 0.0006084806588235294;

void LogRect(std::ostream& stream, const char* name, const hostapi::Rect& rect) {
    stream << "    " << name << ": left(" << rect.left << "), right(" << rect.right << "), top("
           << rect.top << "), bottom(" << rect.bottom << ")\n";
}

void LogValue(std::ostream& stream, const char* name, std::int32_t value) {
    stream << "    " << name << "(" << value << ")\n";
}

void LogData(std::ostream& stream, const char* name, const void* data) {
    stream << "    " << name << "(0x" << LogPointer{data} << ")\n";
}

// A copy of the packed record's fields in their log order, one a line.
struct RecordDump {
    const hostapi::FilterRecord& record;
};

std::ostream& operator<<(std::ostream& stream, const RecordDump& dump) {
    const hostapi::FilterRecord& record = dump.record;
    stream << "pFilterRecord:\n";
    LogValue(stream, "imageMode", record.imageMode);
    LogValue(stream, "filterCase", record.filterCase);
    LogValue(stream, "planes", record.planes);
    LogValue(stream, "depth", record.depth);
    LogData(stream, "inData", record.inData);
    LogValue(stream, "inRowBytes", record.inRowBytes);
    LogValue(stream, "inLayerPlanes", record.inLayerPlanes);
    LogValue(stream, "inTransparencyMask", record.inTransparencyMask);
    LogValue(stream, "inLayerMasks", record.inLayerMasks);
    LogValue(stream, "inInvertedLayerMasks", record.inInvertedLayerMasks);
    LogValue(stream, "inNonLayerPlanes", record.inNonLayerPlanes);
    LogData(stream, "outData", record.outData);
    LogValue(stream, "outRowBytes", record.outRowBytes);
    LogValue(stream, "outLayerPlanes", record.outLayerPlanes);
    LogValue(stream, "outTransparencyMask", record.outTransparencyMask);
    LogValue(stream, "outLayerMasks", record.outLayerMasks);
    LogValue(stream, "outInvertedLayerMasks", record.outInvertedLayerMasks);
    LogValue(stream, "outNonLayerPlanes", record.outNonLayerPlanes);
    LogData(stream, "maskData", record.maskData);
    LogValue(stream, "maskRowBytes", record.maskRowBytes);
    LogValue(stream, "haveMask", record.haveMask);
    LogValue(stream, "isFloating", record.isFloating);
    LogValue(stream, "autoMask", record.autoMask);
    LogValue(stream, "imageSize.h", record.imageSize.h);
    LogValue(stream, "imageSize.v", record.imageSize.v);
    LogValue(stream, "wholeSize.h", record.wholeSize.h);
    LogValue(stream, "wholeSize.v", record.wholeSize.v);
    LogRect(stream, "inRect", record.inRect);
    LogRect(stream, "outRect", record.outRect);
    LogRect(stream, "maskRect", record.maskRect);
    // The log ends the last line itself.
    const hostapi::Rect& rect = record.filterRect;
    return stream << "    filterRect: left(" << rect.left << "), right(" << rect.right << "), top("
                  << rect.top << "), bottom(" << rect.bottom << ")";
}

std::int16_t DivideTruncating(std::int16_t value, std::int32_t divisor) {
    return static_cast<std::int16_t>(value / divisor);
}

void FillRequest(hostapi::FilterRecord& record, std::int32_t factor) {
    record.inRect = {0, 0, record.imageSize.v, record.imageSize.h};
    // The host's selection bounds are deliberately overwritten: the selection is the mask's.
    record.filterRect = record.inRect;
    record.inRect.left = DivideTruncating(record.inRect.left, factor);
    record.inRect.top = DivideTruncating(record.inRect.top, factor);
    record.inRect.right = DivideTruncating(record.inRect.right, factor);
    record.inRect.bottom = DivideTruncating(record.inRect.bottom, factor);
    record.outRect = record.inRect;
    record.inLoPlane = 0;
    record.outLoPlane = 0;
    record.inHiPlane = static_cast<std::int16_t>(record.planes - 1);
    record.outHiPlane = record.inHiPlane;
    const auto rate = static_cast<hostapi::Fixed>(static_cast<std::uint32_t>(factor) << 16);
    record.inputRate = rate;
    record.maskRate = rate;
    record.inputPadding = kOverhangPadding;
    record.outputPadding = kOverhangPadding;
    record.maskPadding = 0;
    if (record.haveMask != 0) {
        record.maskRect = record.inRect;
        if (record.isFloating == 0) {
            record.autoMask = 0;
        }
    }
    record.wantsAbsolute = 0;
}

// A channel in 0.0 to 1.0 as a component 0 to 255; values that no component can hold are bounded.
std::int16_t ColorComponent(double channel) {
    const double value = channel * 255.0;
    if (!(value > -32768.0)) {
        return value <= -32768.0 ? INT16_MIN : 0;
    }
    return value < 32767.0 ? static_cast<std::int16_t>(value) : INT16_MAX;
}

}  // namespace

bool pfFilter::AdvanceStateAvailable(const hostapi::FilterRecord* record) {
    return record->advanceState != nullptr;
}

std::int16_t pfFilter::SetupFilterRecord(hostapi::FilterRecord* record, std::int32_t nScaleFactor) {
    WriteLog(kTrace, "pfFilter::SetupFilterRecord( pFilterRecord(0x", LogPointer{record},
             "), nScaleFactor(", nScaleFactor, ") )");
    const LogScope scope;
    FillRequest(*record, nScaleFactor == 0 ? 1 : nScaleFactor);
    const std::int16_t result =
        AdvanceStateAvailable(record) ? record->advanceState() : hostapi::errPlugInHostInsufficient;
    WriteLog(kTrace, RecordDump{*record});
    return result;
}

bool pfFilter::RequestColor(hostapi::FilterRecord* record, double& red, double& green,
                            double& blue) {
    WriteLog(kTrace, "pfFilter::RequestColor( pFilterRecord(0x", LogPointer{record}, "), fRed(",
             red, "), fGreen(", green, "), fBlue(", blue, ") )");
    bool chosen = false;
    {
        const LogScope scope;
        hostapi::ColorServicesInfo info = {};
        info.infoSize = sizeof(info);
        info.selector = hostapi::plugIncolorServicesChooseColor;
        const bool grayMode = record->imageMode == hostapi::plugInModeGrayScale ||
                              record->imageMode == hostapi::plugInModeGray16;
        info.sourceSpace =
            grayMode ? hostapi::plugIncolorServicesGraySpace : hostapi::plugIncolorServicesRGBSpace;
        info.resultSpace = hostapi::plugIncolorServicesRGBSpace;
        info.colorComponents[0] = ColorComponent(red);
        info.colorComponents[1] = ColorComponent(green);
        info.colorComponents[2] = ColorComponent(blue);
        if (record->colorServices == nullptr) {
            chosen = dialog_->AlternativeColorSelection(record, red, green, blue);
            WriteLog(kWarning, "-**### WARNING ###**-: ColorServices not available");
        } else {
            const std::int16_t code = record->colorServices(&info);
            WriteLog(kTrace, "ColorServices result = ", code, "source space = ", info.sourceSpace,
                     "result space = ", info.resultSpace);
            chosen = code == hostapi::noErr;
            if (chosen) {
                red = info.colorComponents[0] * kByteScale;
                green = info.colorComponents[1] * kByteScale;
                blue = info.colorComponents[2] * kByteScale;
            }
        }
        // 8-bit gray alone, and from the components as they stand: after the dialog's own picker
        // that is the colour that came in. Both are meant.
        if (chosen && record->imageMode == hostapi::plugInModeGrayScale) {
            const double gray = info.colorComponents[0] * kGrayOfByteRed +
                                info.colorComponents[1] * kGrayOfByteGreen +
                                info.colorComponents[2] * kGrayOfByteBlue;
            red = gray;
            green = gray;
            blue = gray;
        }
        WriteLog(kTrace, "pfFilter::RequestColor( return(", chosen, ") fRed(", red, "), fGreen(",
                 green, "), fBlue(", blue, ") )");
    }
    return chosen;
}

}  // namespace mv
