// pfFilter: dispatch of the selectors and their handlers.
#include <cstdio>

#include "diagnostics/Log.h"
#include "frame/HostSuites.h"
#include "frame/RunTiming.h"
#include "frame/pfFilter.h"
#include "interface/UserInterface.h"
#include "interface/pfPreview.h"

namespace mv {
namespace {

constexpr std::int32_t kStatusUnknownSelector = -1;
constexpr std::int32_t kStatusAlreadyShown = 1;

constexpr const char* kHostTooOld =
    "Sorry, but this Plug-In requires some functions\n which are not supported by this host.\n "
    "you need a photoshop 3.0+ compatible host to run this filter.";

void LogHandler(const char* name, const void* record) {
    WriteLog(kTrace, "pfFilter::", name, "( pFilterRecord(0x", LogPointer{record}, ") )");
}

}  // namespace

void pfFilter::Dispatch(std::int16_t selector, void* parameterBlock, std::intptr_t*,
                        std::int16_t* result) {
    if (parameterBlock == nullptr) {
        SetBasicSuite(nullptr);
    } else if (selector == hostapi::filterSelectorAbout) {
        SetBasicSuite(static_cast<hostapi::AboutRecord*>(parameterBlock)->sSPBasic);
    } else {
        SetBasicSuite(static_cast<hostapi::FilterRecord*>(parameterBlock)->sSPBasic);
    }
    AcquireSuites();
    filterRecord_ = static_cast<hostapi::FilterRecord*>(parameterBlock);
    const std::int32_t status = RunSelector(selector, parameterBlock);
    if (result != nullptr) {
        *result = static_cast<std::int16_t>(status);
    }
    ReleaseSuites();
}

std::int32_t pfFilter::RunSelector(std::int16_t selector, void* parameterBlock) {
    if (selector == hostapi::filterSelectorAbout) {
        return DoAboutSelector(parameterBlock);
    }
    if (selector < hostapi::filterSelectorAbout || selector > hostapi::filterSelectorFinish) {
        return kStatusUnknownSelector;
    }
    auto* record = static_cast<hostapi::FilterRecord*>(parameterBlock);
    if (record == nullptr) {
        return hostapi::filterBadParameters;
    }
    switch (selector) {
        case hostapi::filterSelectorParameters:
            return DoParametersSelector(record);
        case hostapi::filterSelectorPrepare:
            return DoPrepareSelector(record);
        case hostapi::filterSelectorStart:
            return DoStartSelector(record);
        case hostapi::filterSelectorContinue:
            return DoContinueSelector(record);
        default:
            return DoFinishSelector(record);
    }
}

std::int32_t pfFilter::DoAboutSelector(const void* aboutRecord) {
    LogHandler("DoAboutSelector", aboutRecord);
    const LogScope scope;
    char text[1024];
    std::snprintf(text, sizeof(text), "%s v%u.%u.%u\r%s", GetName().c_str(), GetVersionMajor(),
                  GetVersionMinor(), GetVersionPatch(), GetDescription().c_str());
    ShowAbout(text);
    return hostapi::noErr;
}

std::int32_t pfFilter::DoParametersSelector(hostapi::FilterRecord* record) {
    LogHandler("DoParametersSelector", record);
    const LogScope scope;
    parameters_.ValidateAll();
    return hostapi::noErr;
}

// The render's working memory is the module's own business, so the host keeps all of its own.
std::int32_t pfFilter::DoPrepareSelector(hostapi::FilterRecord* record) {
    LogHandler("DoPrepareSelector", record);
    const LogScope scope;
    record->maxSpace = 0;
    record->bufferSpace = 0;
    return hostapi::noErr;
}

std::int32_t pfFilter::DoStartSelector(hostapi::FilterRecord* record) {
    LogHandler("DoStartSelector", record);
    const LogScope scope;
    std::int32_t status = kStatusAlreadyShown;
    if (!AdvanceStateAvailable(record) || record->progressProc == nullptr) {
        WriteLog(kError,
                 "-**###  ERROR  ###**-: AdvanceStateAvailable() or ProgressProcedure not "
                 "available");
        ShowErrorBox(record, GetFilterName(), kHostTooOld);
    } else {
        status = RunFilter(record);
    }
    // Empty rectangles tell the host that there is nothing left to request.
    record->inRect = {};
    record->outRect = {};
    record->maskRect = {};
    WriteLog(kTrace, "pfFilter::DoStartSelector( return(", status, ") )");
    return status;
}

std::int32_t pfFilter::RunFilter(hostapi::FilterRecord* record) {
    parameters_.ValidateAll();
    const bool dialogWanted = parameters_.ReadScriptParams(record);
    if (dialogWanted && !dialog_->Show(this, record, &controls_)) {
        parameters_.WriteScriptParams(record);
        return hostapi::userCanceledErr;
    }
    parameters_.WriteScriptParams(record);
    parameters_.ValidateAll();
    const RunTiming timing(*this, *record);
    const std::int32_t status = RequestWholeImage(record);
    return status == hostapi::noErr ? RenderWholeImage(record) : status;
}

std::int32_t pfFilter::RequestWholeImage(hostapi::FilterRecord* record) {
    const MeasuringPoint point(GetActiveMeasurements(), "image from the host");
    return SetupFilterRecord(record, 1);
}

std::int32_t pfFilter::RenderWholeImage(hostapi::FilterRecord* record) {
    SetPreviewScale(0);
    std::int32_t status = static_cast<std::int16_t>(SelectRenderTemplate(record));
    if (status == StatusOk()) {
        status = interruption_;
    }
    // Leaves the host's progress bar at its start.
    BeginRender();
    ReportProgress(0, 1, 0);
    return status;
}

std::int32_t pfFilter::DoContinueSelector(hostapi::FilterRecord* record) {
    LogHandler("DoContinueSelector", record);
    const LogScope scope;
    return hostapi::noErr;
}

std::int32_t pfFilter::DoFinishSelector(hostapi::FilterRecord* record) {
    LogHandler("DoFinishSelector", record);
    const LogScope scope;
    return hostapi::noErr;
}

}  // namespace mv
