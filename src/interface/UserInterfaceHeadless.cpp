#include "diagnostics/Log.h"
#include "interface/UserInterface.h"
#include "interface/pfPreview.h"
#include "parameters/pfParameterUI.h"

namespace mv {
namespace {

// Stands in where no windows exist: the run goes on with the values as they are.
class pfPreviewHeadless final : public pfPreview {
public:
    bool Show(pfFilter*, hostapi::FilterRecord*, std::list<pfParameterUI*>*) override {
        WriteLog(kWarning, "-**### WARNING ###**-: no dialog on this system, going on without");
        return true;
    }

    void ParametersChanged() override {}

    bool AlternativeColorSelection(hostapi::FilterRecord*, double&, double&, double&) override {
        return false;
    }
};

}  // namespace

std::unique_ptr<pfPreview> CreatePreview() {
    return std::make_unique<pfPreviewHeadless>();
}

std::unique_ptr<pfParameterUI> CreatePositionControl(int, int) {
    return std::make_unique<pfParameterUI>();
}

std::unique_ptr<pfParameterUI> CreateFloatControl(int, int) {
    return std::make_unique<pfParameterUI>();
}

std::unique_ptr<pfParameterUI> CreateBoolControl(int) {
    return std::make_unique<pfParameterUI>();
}

std::unique_ptr<pfParameterUI> CreateListControl(int) {
    return std::make_unique<pfParameterUI>();
}

void ShowAbout(const char* text) noexcept {
    WriteLog(kTrace, "ShowAbout( text(", text, ") )");
}

void ShowErrorBox(const hostapi::FilterRecord*, const char* caption, const char* text) noexcept {
    WriteLog(kError, "-**###  ERROR  ###**-: ", caption, ": ", text);
}

DrainResult DrainMessages() noexcept {
    return DrainResult::Done;
}

}  // namespace mv
