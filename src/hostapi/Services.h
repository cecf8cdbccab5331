// Colour services and the host's pixel display.
#pragma once

#include "hostapi/Types.h"

namespace hostapi {

struct ColorServicesInfo {
    std::int32_t infoSize;
    std::int16_t selector;
    std::int16_t sourceSpace;
    std::int16_t resultSpace;
    Boolean resultGamutInfoValid;
    Boolean resultInGamut;
    void* reservedSourceSpaceInfo;
    void* reservedResultSpaceInfo;
    std::int16_t colorComponents[4];
    void* reserved;
    union {
        Str255* pickerPrompt;
        Point* globalSamplePoint;
        std::int32_t specialColorID;
    } selectorParameter;
};

struct PSPixelMask {
    PSPixelMask* next;
    void* maskData;
    std::int32_t rowBytes;
    std::int32_t colBytes;
    std::int32_t maskDescription;
};

// Version 1: a host that is told so reads nothing behind maskPhaseCol.
struct PSPixelMap {
    std::int32_t version;
    VRect bounds;
    std::int32_t imageMode;
    std::int32_t rowBytes;
    std::int32_t colBytes;
    std::int32_t planeBytes;
    void* baseAddr;
    PSPixelMask* mat;
    PSPixelMask* masks;
    std::int32_t maskPhaseRow;
    std::int32_t maskPhaseCol;
};

static_assert(sizeof(ColorServicesInfo) == 56);
static_assert(offsetof(ColorServicesInfo, reservedSourceSpaceInfo) == 16);
static_assert(offsetof(ColorServicesInfo, colorComponents) == 32);
static_assert(offsetof(ColorServicesInfo, selectorParameter) == 48);
static_assert(sizeof(PSPixelMask) == 32);
static_assert(sizeof(PSPixelMap) == 72);
static_assert(offsetof(PSPixelMap, imageMode) == 20);
static_assert(offsetof(PSPixelMap, baseAddr) == 40);

}  // namespace hostapi
