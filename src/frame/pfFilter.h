#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "frame/MorvenhaleHost.h"
#include "hostapi/HostApi.h"
#include "parameters/pfParameters.h"
#include "parameters/pfUndoBuffer.h"
#include "platform/RecursiveLock.h"

namespace mv {

class pfParameterUI;
class pfPreview;

// A filter bound to a host of the published interface: answers the selectors, asks the host for
// the image, and gives the render its progress, abort and memory. One object per loaded module;
// it holds all state between selectors. Selectors come on the host's thread, one at a time.
class pfFilter : public MorvenhaleHost {
public:
    // Throws std::bad_alloc when memory is out.
    pfFilter(std::string name, std::string maker, std::uint32_t versionMajor,
             std::uint32_t versionMinor, std::uint32_t versionPatch, std::string description);
    ~pfFilter() override;

    std::int32_t StatusOutOfMemory() override { return hostapi::memFullErr; }
    std::int32_t ReportProgress(std::int32_t done, std::int32_t total, std::int32_t quiet) override;
    void* AllocateMemory(std::uint32_t size) override;
    void FreeMemory(void* block) override;
    // An interruption ends every job's caller, whichever thread it reached first.
    std::int32_t Iterate(std::int32_t iterations, IterateFunction function) override;
    void GetRange(double* start, double* end) override;

    virtual xParameterList CreateParameterList() { return {}; }
    // Gives a status, of which the low 16 bits count.
    virtual std::int32_t SelectRenderTemplate(hostapi::FilterRecord* record) = 0;
    virtual void UpdateInterface(hostapi::FilterRecord*) {}
    virtual void Reset(bool recordUndo) = 0;
    virtual const char* GetFilterName() = 0;
    virtual std::int32_t DoParametersSelector(hostapi::FilterRecord* record);

    // Runs one selector and stores the handler's result, cut to 16 bits.
    void Dispatch(std::int16_t selector, void* parameterBlock, std::intptr_t* data,
                  std::int16_t* result);

    // Asks the host for the whole image, reduced nScaleFactor times (0 counts as 1), in one
    // advanceState call, whose result comes back.
    static std::int16_t SetupFilterRecord(hostapi::FilterRecord* record, std::int32_t nScaleFactor);
    static bool AdvanceStateAvailable(const hostapi::FilterRecord* record);

    // Lets the user choose a colour, channels 0.0 to 1.0 in and out. True when one was chosen.
    bool RequestColor(hostapi::FilterRecord* record, double& red, double& green, double& blue);

    // Full size over the size in hand, as integers; 0 where there is no image in hand.
    std::int32_t GetHorizontalReduction() const;
    std::int32_t GetVerticalReduction() const;
    std::int32_t GetPreviewScale() const { return previewScale_; }
    void SetPreviewScale(std::int32_t scale) { previewScale_ = scale; }
    hostapi::FilterRecord* GetFilterRecord() const { return filterRecord_; }

    pfParameters& GetParameters() { return parameters_; }
    pfUndoBuffer& GetUndoBuffer() { return undoBuffer_; }
    pfPreview& GetPreview() { return *dialog_; }
    std::list<pfParameterUI*>& GetControls() { return controls_; }

protected:
    // Forgets what interrupted an earlier render.
    void BeginRender() { interruption_ = hostapi::noErr; }

private:
    std::int32_t RunSelector(std::int16_t selector, void* parameterBlock);
    std::int32_t DoAboutSelector(const void* aboutRecord);
    std::int32_t DoPrepareSelector(hostapi::FilterRecord* record);
    std::int32_t DoStartSelector(hostapi::FilterRecord* record);
    std::int32_t DoContinueSelector(hostapi::FilterRecord* record);
    std::int32_t DoFinishSelector(hostapi::FilterRecord* record);
    std::int32_t RunFilter(hostapi::FilterRecord* record);
    std::int32_t RequestWholeImage(hostapi::FilterRecord* record);
    std::int32_t RenderWholeImage(hostapi::FilterRecord* record);
    std::int32_t ReportToHost(std::int32_t done, std::int32_t total, std::int32_t quiet);
    std::int32_t ReportToPreview();
    void AcquireSuites();
    static void ReleaseSuites();

    std::unique_ptr<pfPreview> dialog_;
    pfParameters parameters_;
    std::list<pfParameterUI*> controls_;
    pfUndoBuffer undoBuffer_;
    const hostapi::PSBufferSuite1* bufferSuite_ = nullptr;
    const hostapi::PSHandleSuite2* handleSuite_ = nullptr;
    std::int32_t previewScale_ = 0;
    // What ended the render in hand before its time, or success.
    std::int32_t interruption_ = hostapi::noErr;
    hostapi::FilterRecord* filterRecord_ = nullptr;
    RecursiveLock progressLock_;
};

}  // namespace mv
