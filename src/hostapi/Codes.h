// Selectors, result codes, image modes and other numbers of the published interface.
#pragma once

#include "hostapi/Types.h"

namespace hostapi {

enum Selector : std::int16_t {
    filterSelectorAbout = 0,
    filterSelectorParameters = 1,
    filterSelectorPrepare = 2,
    filterSelectorStart = 3,
    filterSelectorContinue = 4,
    filterSelectorFinish = 5,
};

constexpr OSErr noErr = 0;
constexpr OSErr userCanceledErr = -128;
constexpr OSErr coercedParamErr = 2;
constexpr OSErr memFullErr = -108;
constexpr OSErr paramErr = -50;
constexpr OSErr filterBadParameters = -30100;
constexpr OSErr filterBadMode = -30101;
constexpr OSErr errPlugInHostInsufficient = -30900;
constexpr OSErr errReportString = -30904;
constexpr OSErr errMissingParameter = -1715;

constexpr std::int32_t kSPNoError = 0;
constexpr std::int32_t kSPSuiteNotFoundError = 0x53214664;
constexpr std::int32_t kSPBadParameterError = 0x5061726D;

enum ImageMode : std::int16_t {
    plugInModeBitmap = 0,
    plugInModeGrayScale = 1,
    plugInModeIndexedColor = 2,
    plugInModeRGBColor = 3,
    plugInModeCMYKColor = 4,
    plugInModeHSLColor = 5,
    plugInModeHSBColor = 6,
    plugInModeMultichannel = 7,
    plugInModeDuotone = 8,
    plugInModeLabColor = 9,
    plugInModeGray16 = 10,
    plugInModeRGB48 = 11,
    plugInModeLab48 = 12,
    plugInModeCMYK64 = 13,
    plugInModeDeepMultichannel = 14,
    plugInModeDuotone16 = 15,
    plugInModeRGB96 = 16,
    plugInModeGray32 = 17,
};

enum FilterCase : std::int16_t {
    filterCaseFlatImageNoSelection = 1,
    filterCaseFlatImageWithSelection = 2,
    filterCaseFloatingSelection = 3,
    filterCaseEditableTransparencyNoSelection = 4,
    filterCaseEditableTransparencyWithSelection = 5,
    filterCaseProtectedTransparencyNoSelection = 6,
    filterCaseProtectedTransparencyWithSelection = 7,
};

enum PlayInfo : std::int16_t {
    plugInDialogDontDisplay = 0,
    plugInDialogDisplay = 1,
    plugInDialogSilent = 2,
};

enum RecordInfo : std::int16_t {
    plugInDialogOptional = 0,
    plugInDialogRequired = 1,
    plugInDialogNone = 2,
};

constexpr OSType typeInteger = FourCharacterCode("long");
constexpr OSType typeFloat = FourCharacterCode("doub");
constexpr OSType typeBoolean = FourCharacterCode("bool");
constexpr OSType typeNull = FourCharacterCode("null");

constexpr std::int16_t plugIncolorServicesChooseColor = 0;
constexpr std::int16_t plugIncolorServicesRGBSpace = 0;
constexpr std::int16_t plugIncolorServicesGraySpace = 4;

constexpr const char* kPSBufferSuite = "Photoshop Buffer Suite for Plug-ins";
constexpr std::int32_t kPSBufferSuiteVersion1 = 1;
constexpr const char* kPSHandleSuite = "Photoshop Handle Suite for Plug-ins";
constexpr std::int32_t kPSHandleSuiteVersion1 = 1;
constexpr std::int32_t kPSHandleSuiteVersion2 = 2;

}  // namespace hostapi
