// FilterRecord and AboutRecord: the blocks that a host hands to a filter with each selector.
#pragma once

#include "hostapi/Descriptors.h"
#include "hostapi/Services.h"
#include "hostapi/Suites.h"
#include "hostapi/Types.h"

namespace hostapi {

struct AboutRecord {
    PlatformData* platformData;
    SPBasicSuite* sSPBasic;
    void* plugInRef;
    std::uint8_t reserved[244];
};

// 32-bit coordinates for images beyond 32767 pixels a side.
struct BigDocumentStruct {
    std::int32_t PluginUsing32BitCoordinates;
    VPoint imageSize32;
    VRect filterRect32;
    VRect inRect32;
    VRect outRect32;
    VRect maskRect32;
    VPoint floatCoord32;
    VPoint wholeSize32;
};

#pragma pack(push, 4)
// Members of eight bytes are aligned to four here, and in no other structure of the interface.
struct FilterRecord {
    std::int32_t serialNumber;
    Boolean (*abortProc)();
    void (*progressProc)(std::int32_t done, std::int32_t total);
    Handle parameters;
    Point imageSize;
    std::int16_t planes;
    Rect filterRect;
    RGBColor background;
    RGBColor foreground;
    std::int32_t maxSpace;
    std::int32_t bufferSpace;
    Rect inRect;
    std::int16_t inLoPlane;
    std::int16_t inHiPlane;
    Rect outRect;
    std::int16_t outLoPlane;
    std::int16_t outHiPlane;
    void* inData;
    std::int32_t inRowBytes;
    void* outData;
    std::int32_t outRowBytes;
    Boolean isFloating;
    Boolean haveMask;
    Boolean autoMask;
    Rect maskRect;
    void* maskData;
    std::int32_t maskRowBytes;
    FilterColor backColor;
    FilterColor foreColor;
    OSType hostSig;
    void (*hostProc)(std::int16_t selector, std::intptr_t* data);
    std::int16_t imageMode;
    Fixed imageHRes;
    Fixed imageVRes;
    Point floatCoord;
    Point wholeSize;
    PlugInMonitor monitor;
    PlatformData* platformData;
    void* bufferProcs;
    void* resourceProcs;
    void (*processEvent)(void* event);
    OSErr (*displayPixels)(const PSPixelMap* source, const VRect* srcRect, std::int32_t dstRow,
                           std::int32_t dstCol, void* platformContext);
    HandleProcs* handleProcs;
    Boolean supportsDummyChannels;
    Boolean supportsAlternateLayouts;
    std::int16_t wantLayout;
    std::int16_t filterCase;
    std::int16_t dummyPlaneValue;
    void* premiereHook;
    OSErr (*advanceState)();
    Boolean supportsAbsolute;
    Boolean wantsAbsolute;
    OSErr (*getPropertyObsolete)(OSType signature, OSType key, std::int32_t index,
                                 std::intptr_t* simpleProperty, Handle* complexProperty);
    Boolean cannotUndo;
    Boolean supportsPadding;
    std::int16_t inputPadding;
    std::int16_t outputPadding;
    std::int16_t maskPadding;
    std::uint8_t samplingSupport;
    std::uint8_t reservedByte;
    Fixed inputRate;
    Fixed maskRate;
    OSErr (*colorServices)(ColorServicesInfo* info);
    std::int16_t inLayerPlanes;
    std::int16_t inTransparencyMask;
    std::int16_t inLayerMasks;
    std::int16_t inInvertedLayerMasks;
    std::int16_t inNonLayerPlanes;
    std::int16_t outLayerPlanes;
    std::int16_t outTransparencyMask;
    std::int16_t outLayerMasks;
    std::int16_t outInvertedLayerMasks;
    std::int16_t outNonLayerPlanes;
    std::int16_t absLayerPlanes;
    std::int16_t absTransparencyMask;
    std::int16_t absLayerMasks;
    std::int16_t absInvertedLayerMasks;
    std::int16_t absNonLayerPlanes;
    std::int16_t inPreDummyPlanes;
    std::int16_t inPostDummyPlanes;
    std::int16_t outPreDummyPlanes;
    std::int16_t outPostDummyPlanes;
    std::int32_t inColumnBytes;
    std::int32_t inPlaneBytes;
    std::int32_t outColumnBytes;
    std::int32_t outPlaneBytes;
    void* imageServicesProcs;
    void* propertyProcs;
    std::int16_t inTileHeight;
    std::int16_t inTileWidth;
    Point inTileOrigin;
    std::int16_t absTileHeight;
    std::int16_t absTileWidth;
    Point absTileOrigin;
    std::int16_t outTileHeight;
    std::int16_t outTileWidth;
    Point outTileOrigin;
    std::int16_t maskTileHeight;
    std::int16_t maskTileWidth;
    Point maskTileOrigin;
    PIDescriptorParameters* descriptorParameters;
    Str255* errorString;
    void* channelPortProcs;
    void* documentInfo;
    SPBasicSuite* sSPBasic;
    void* plugInRef;
    std::int32_t depth;
    Handle iCCprofileData;
    std::int32_t iCCprofileSize;
    std::int32_t canUseICCProfiles;
    std::int32_t hasImageScrap;
    BigDocumentStruct* bigDocumentData;
    void* input3DScene;
    void* output3DScene;
    Boolean createNewLayer;
    Handle iCCWorkingProfileData;
    std::int32_t iCCWorkingProfileSize;
    std::int64_t bufferSpace64;
    std::int64_t maxSpace64;
    std::uint8_t reserved[48];
};
#pragma pack(pop)

static_assert(sizeof(AboutRecord) == 272 && offsetof(AboutRecord, sSPBasic) == 8);
static_assert(sizeof(BigDocumentStruct) == 92);
static_assert(sizeof(FilterRecord) == 608 && alignof(FilterRecord) == 4);
static_assert(offsetof(FilterRecord, abortProc) == 4);
static_assert(offsetof(FilterRecord, progressProc) == 12);
static_assert(offsetof(FilterRecord, parameters) == 20);
static_assert(offsetof(FilterRecord, imageSize) == 28);
static_assert(offsetof(FilterRecord, planes) == 32);
static_assert(offsetof(FilterRecord, filterRect) == 34);
static_assert(offsetof(FilterRecord, maxSpace) == 56);
static_assert(offsetof(FilterRecord, bufferSpace) == 60);
static_assert(offsetof(FilterRecord, inRect) == 64);
static_assert(offsetof(FilterRecord, inLoPlane) == 72);
static_assert(offsetof(FilterRecord, outRect) == 76);
static_assert(offsetof(FilterRecord, outHiPlane) == 86);
static_assert(offsetof(FilterRecord, inData) == 88);
static_assert(offsetof(FilterRecord, inRowBytes) == 96);
static_assert(offsetof(FilterRecord, outData) == 100);
static_assert(offsetof(FilterRecord, outRowBytes) == 108);
static_assert(offsetof(FilterRecord, isFloating) == 112);
static_assert(offsetof(FilterRecord, haveMask) == 113);
static_assert(offsetof(FilterRecord, autoMask) == 114);
static_assert(offsetof(FilterRecord, maskRect) == 116);
static_assert(offsetof(FilterRecord, maskData) == 124);
static_assert(offsetof(FilterRecord, maskRowBytes) == 132);
static_assert(offsetof(FilterRecord, hostSig) == 144);
static_assert(offsetof(FilterRecord, imageMode) == 156);
static_assert(offsetof(FilterRecord, wholeSize) == 172);
static_assert(offsetof(FilterRecord, platformData) == 216);
static_assert(offsetof(FilterRecord, displayPixels) == 248);
static_assert(offsetof(FilterRecord, handleProcs) == 256);
static_assert(offsetof(FilterRecord, filterCase) == 268);
static_assert(offsetof(FilterRecord, advanceState) == 280);
static_assert(offsetof(FilterRecord, wantsAbsolute) == 289);
static_assert(offsetof(FilterRecord, inputPadding) == 302);
static_assert(offsetof(FilterRecord, inputRate) == 312);
static_assert(offsetof(FilterRecord, maskRate) == 316);
static_assert(offsetof(FilterRecord, colorServices) == 320);
static_assert(offsetof(FilterRecord, inLayerPlanes) == 328);
static_assert(offsetof(FilterRecord, outNonLayerPlanes) == 346);
static_assert(offsetof(FilterRecord, inColumnBytes) == 368);
static_assert(offsetof(FilterRecord, inTileHeight) == 400);
static_assert(offsetof(FilterRecord, descriptorParameters) == 432);
static_assert(offsetof(FilterRecord, errorString) == 440);
static_assert(offsetof(FilterRecord, sSPBasic) == 464);
static_assert(offsetof(FilterRecord, depth) == 480);
static_assert(offsetof(FilterRecord, bigDocumentData) == 504);
static_assert(offsetof(FilterRecord, bufferSpace64) == 544);
static_assert(offsetof(FilterRecord, reserved) == 560);

using EntryPoint = void (*)(std::int16_t selector, void* parameterBlock, std::intptr_t* data,
                            std::int16_t* result);

}  // namespace hostapi
