#pragma once

#include <array>
#include <memory>

#include "effect/RenderSettings.h"
#include "frame/pfFilter.h"
#include "image/PixelArray.h"
#include "parameters/pfParameterBool.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterList.h"
#include "parameters/pfParameterPosition.h"

namespace mv {

// The radial blur: the 22 parameters, their controls, and what the generic frame leaves open.
class pfFilterRadialBlur : public pfFilter {
public:
    static constexpr int kParameterCount = 22;

    // Throws std::bad_alloc when memory is out; the next selector then tries again.
    pfFilterRadialBlur(std::string name, std::string maker, std::uint32_t versionMajor,
                       std::uint32_t versionMinor, std::uint32_t versionPatch,
                       std::string description);
    ~pfFilterRadialBlur() override;

    std::int32_t SelectRenderTemplate(hostapi::FilterRecord* record) override;
    void UpdateInterface(hostapi::FilterRecord* record) override;
    void Reset(bool recordUndo) override;
    const char* GetFilterName() override { return "RadialBlur"; }

    // The typed render of one pixel shape: input and output of width x height pixels, mask 8-bit
    // gray of the same size, connected or not. Gives a status. Nothing passed in is kept.
    template <class HostPixel>
    std::int32_t Render(HostImage<HostPixel>& input, HostImage<HostPixel>& output, MaskImage& mask,
                        hostapi::FilterRecord* record);

    // What the effect gets for an image of width x height pixels.
    RenderSettings MakeRenderSettings(std::int32_t width, std::int32_t height) const;

    // In table order: parameter and control number index, 0 to 21.
    pfParameterUI* GetControl(int index) const {
        return controlObjects_[static_cast<std::size_t>(index)].get();
    }

    // Presses the randomize button.
    void RandomizeParameters();

private:
    void CreateControls();
    void InstallCallbacks();
    void DescribeParameters();
    void DescribeLists();
    void BindControls();
    void SetControlEnabled(pfParameter& parameter, bool enabled);
    void UpdateInvertGradient();

    static void ModeChanged(pfParameter* parameter, void* filter);
    static void RandomizePressed(pfParameter* parameter, void* filter);

    pfParameterPosition origin_;
    pfParameterFloat intensity_;
    pfParameterFloat strength_;
    pfParameterFloat zoomStart_;
    pfParameterFloat holdoutRadius_;
    pfParameterBool invertGradient_;
    pfParameterBool gammaCorrection_;
    pfParameterFloat gammaCorrectionCorrective_;
    pfParameterFloat contrast_;
    pfParameterFloat hue_;
    pfParameterFloat saturation_;
    pfParameterFloat lightness_;
    pfParameterFloat selectionLow_;
    pfParameterFloat selectionHigh_;
    pfParameterFloat selectionSoften_;
    pfParameterFloat selectionClimax_;
    pfParameterBool useSizeSelection_;
    pfParameterList mode_;
    pfParameterList blendMode_;
    pfParameterList selectionShow_;
    pfParameterFloat randomize_;
    pfParameterBool randomizeButton_;

    // In table order, one for each parameter.
    std::array<std::unique_ptr<pfParameterUI>, kParameterCount> controlObjects_;
};

}  // namespace mv
