#include "frame/pfFilterRadialBlur.h"

#include <utility>

#include "diagnostics/Log.h"
#include "interface/UserInterface.h"
#include "interface/pfPreview.h"
#include "parameters/pfParameterUI.h"
#include "parameters/pfUndo.h"

namespace mv {
namespace {

constexpr std::int16_t kMinimumColorPlanes = 3;

}  // namespace

pfFilterRadialBlur::pfFilterRadialBlur(std::string name, std::string maker,
                                       std::uint32_t versionMajor, std::uint32_t versionMinor,
                                       std::uint32_t versionPatch, std::string description)
    : pfFilter(std::move(name), std::move(maker), versionMajor, versionMinor, versionPatch,
               std::move(description)) {
    WriteLog(kTrace, "pfFilterRadialBlur::pfFilterRadialBlur()");
    const LogScope scope;
    CreateControls();
    InstallCallbacks();
    DescribeParameters();
    DescribeLists();
    BindControls();
    Reset(false);
    GetParameters().ValidateAll();
}

pfFilterRadialBlur::~pfFilterRadialBlur() = default;

void pfFilterRadialBlur::InstallCallbacks() {
    mode_.SetChangeCallback(&pfFilterRadialBlur::ModeChanged, this);
    randomizeButton_.SetChangeCallback(&pfFilterRadialBlur::RandomizePressed, this);
}

void pfFilterRadialBlur::BindControls() {
    pfParameter* const parameters[kParameterCount] = {&origin_,
                                                      &intensity_,
                                                      &strength_,
                                                      &zoomStart_,
                                                      &holdoutRadius_,
                                                      &mode_,
                                                      &invertGradient_,
                                                      &gammaCorrection_,
                                                      &contrast_,
                                                      &gammaCorrectionCorrective_,
                                                      &hue_,
                                                      &saturation_,
                                                      &lightness_,
                                                      &selectionLow_,
                                                      &selectionHigh_,
                                                      &selectionSoften_,
                                                      &selectionClimax_,
                                                      &useSizeSelection_,
                                                      &blendMode_,
                                                      &selectionShow_,
                                                      &randomize_,
                                                      &randomizeButton_};
    GetParameters().Reserve(kParameterCount);
    for (std::size_t i = 0; i < kParameterCount; ++i) {
        controlObjects_[i]->Bind(parameters[i]);
        GetControls().push_back(controlObjects_[i].get());
        GetParameters().Add(parameters[i]);
    }
}

void pfFilterRadialBlur::SetControlEnabled(pfParameter& parameter, bool enabled) {
    if (pfParameterUI* control = parameter.GetUI()) {
        control->SetEnabled(enabled);
    }
}

// The test for colour modes is meant as it stands: it leaves out 32-bit RGB (16), whose hue,
// saturation, lightness and mode controls stay disabled.
void pfFilterRadialBlur::UpdateInterface(hostapi::FilterRecord* record) {
    if (record == nullptr) {
        return;
    }
    const bool colorMode = ((record->imageMode - 3) & 0xFFF3) == 0 && record->imageMode != 15;
    const bool color = colorMode && (record->inLayerPlanes >= kMinimumColorPlanes ||
                                     record->inNonLayerPlanes >= kMinimumColorPlanes);
    SetControlEnabled(hue_, color);
    SetControlEnabled(saturation_, color);
    SetControlEnabled(lightness_, color);
    if (!color) {
        mode_.Set(kModeNormal);
        SetControlEnabled(mode_, false);
    }
    SetControlEnabled(useSizeSelection_, record->maskData != nullptr);
}

void pfFilterRadialBlur::Reset(bool recordUndo) {
    if (recordUndo) {
        // Origin twice: the second record holds the same state and is kept deliberately.
        pfParameter* const recorded[] = {&origin_,
                                         &origin_,
                                         &intensity_,
                                         &strength_,
                                         &zoomStart_,
                                         &holdoutRadius_,
                                         &mode_,
                                         &invertGradient_,
                                         &gammaCorrection_,
                                         &contrast_,
                                         &hue_,
                                         &saturation_,
                                         &lightness_,
                                         &selectionLow_,
                                         &selectionHigh_,
                                         &selectionSoften_,
                                         &selectionClimax_,
                                         &useSizeSelection_,
                                         &gammaCorrectionCorrective_,
                                         &blendMode_,
                                         &selectionShow_};
        for (pfParameter* parameter : recorded) {
            GetUndoBuffer().Push(parameter->CreateUndo());
        }
        GetUndoBuffer().NextStep();
    }
    origin_.Set(0.5, 0.5);
    intensity_.Set(1.0);
    strength_.Set(0.25);
    zoomStart_.Set(0.5);
    holdoutRadius_.Set(0.0);
    mode_.Set(kModeNormal);
    invertGradient_.Set(false);
    gammaCorrection_.Set(true);
    contrast_.Set(0.0);
    hue_.Set(0.0);
    saturation_.Set(0.0);
    lightness_.Set(0.0);
    selectionLow_.Set(0.0);
    selectionHigh_.Set(255.0);
    selectionSoften_.Set(0.0);
    selectionClimax_.Set(1.0);
    useSizeSelection_.Set(false);
    gammaCorrectionCorrective_.Set(1.0);
    blendMode_.Set(1);
    selectionShow_.Set(kShowNormal);
}

void pfFilterRadialBlur::UpdateInvertGradient() {
    SetControlEnabled(invertGradient_, mode_.Get() == kModeAbberative);
}

void pfFilterRadialBlur::ModeChanged(pfParameter*, void* filter) {
    if (filter != nullptr) {
        static_cast<pfFilterRadialBlur*>(filter)->UpdateInvertGradient();
    }
}

void pfFilterRadialBlur::RandomizePressed(pfParameter*, void* filter) {
    if (filter != nullptr) {
        static_cast<pfFilterRadialBlur*>(filter)->RandomizeParameters();
    }
}

void pfFilterRadialBlur::RandomizeParameters() {
    randomizeButton_.SetRandomizable(false);
    randomize_.SetRandomizable(false);
    blendMode_.SetRandomizable(false);
    selectionShow_.SetRandomizable(false);
    useSizeSelection_.SetRandomizable(false);
    GetParameters().RandomizeAll(randomize_.Get(), GetUndoBuffer());
    GetPreview().ParametersChanged();
}

}  // namespace mv
