// pfFilterRadialBlur: the table of parameters. Names, keys, ranges, list entries, control ids.
#include <algorithm>
#include <cmath>

#include "frame/pfFilterRadialBlur.h"
#include "interface/UserInterface.h"
#include "parameters/pfParameterUI.h"

namespace mv {
namespace {

using hostapi::FourCharacterCode;

constexpr bool kHard = true;
constexpr bool kSoft = false;

// From 0 to 255 into 0 to 1.
constexpr double kSelectionScale = 0.00392156862745098;

// A gamma of 0 or below still has an exponent, through this floor.
constexpr double kSmallestGamma = 0.001;

// Beyond it a centre's distance to any pixel no longer changes, and rays stay computable.
constexpr double kFarthestCenter = 1073741824.0;

constexpr const char* kModeNames[] = {"normal", "abberative"};
constexpr const char* kShowNames[] = {"normal", "selected image", "selection only",
                                      "size selection"};
constexpr const char* kBlendNames[] = {
    "normal",    "max weight", "screen",     "overlay",       "addition",      "subtraction",
    "multiply",  "divide",     "difference", "exclusion",     "lighten",       "darken",
    "maximum",   "minimum",    "hue",        "saturation",    "color",         "luminosity",
    "alpha add", "alpha sub",  "alpha mult", "alpha replace", "(none) replace"};

struct FloatRow {
    const char* name;
    double value;
    double minimum;
    bool minimumHard;
    double maximum;
    bool maximumHard;
    hostapi::OSType key;
};

void Describe(pfParameterFloat& parameter, const FloatRow& row) {
    parameter.SetName(row.name);
    parameter.Set(row.value);
    parameter.SetMinimum(row.minimum, row.minimumHard);
    parameter.SetMaximum(row.maximum, row.maximumHard);
    parameter.SetScriptKey(row.key);
}

double CenterInPixels(double fraction, std::int32_t size) {
    const double center = fraction * size;
    if (std::isnan(center)) {
        return 0.0;
    }
    return std::clamp(center, -kFarthestCenter, kFarthestCenter);
}

}  // namespace

void pfFilterRadialBlur::CreateControls() {
    std::size_t next = 0;
    const auto add = [&](std::unique_ptr<pfParameterUI> control) {
        controlObjects_[next++] = std::move(control);
    };
    add(CreatePositionControl(1031, 1032));
    add(CreateFloatControl(1013, 1011));
    add(CreateFloatControl(1028, 1025));
    add(CreateFloatControl(1034, 1033));
    add(CreateFloatControl(1036, 1035));
    add(CreateListControl(1037));
    add(CreateBoolControl(1077));
    add(CreateBoolControl(1078));
    add(CreateFloatControl(1039, 1038));
    add(CreateFloatControl(1066, 1064));
    add(CreateFloatControl(1014, 1012));
    add(CreateFloatControl(1017, 1016));
    add(CreateFloatControl(1019, 1018));
    add(CreateFloatControl(1067, 1065));
    add(CreateFloatControl(1021, 1020));
    add(CreateFloatControl(1023, 1022));
    add(CreateFloatControl(1026, 1024));
    add(CreateBoolControl(1080));
    add(CreateListControl(1009));
    add(CreateListControl(1029));
    add(CreateFloatControl(1069, 1068));
    add(CreateBoolControl(1040));
}

// Some values stand only until the constructor's Reset, which sets the defaults.
void pfFilterRadialBlur::DescribeParameters() {
    origin_.SetName("Origin");
    origin_.Set(0.5, 0.5);
    origin_.SetScriptKeys(FourCharacterCode("ORIX"), FourCharacterCode("ORIY"));
    Describe(intensity_, {"Intensity", 2.0, 0.0, kHard, 5.0, kSoft, FourCharacterCode("INTE")});
    Describe(strength_, {"Strength", 0.25, 0.0, kHard, 1.0, kSoft, FourCharacterCode("STRE")});
    Describe(zoomStart_, {"ZoomStart", 0.5, -0.5, kSoft, 0.5, kSoft, FourCharacterCode("ZOST")});
    Describe(holdoutRadius_,
             {"HoldoutRadius", 0.0, 0.0, kHard, 1.0, kSoft, FourCharacterCode("HORA")});
    invertGradient_.SetName("InvertGradient");
    invertGradient_.SetScriptKey(FourCharacterCode("INGR"));
    gammaCorrection_.SetName("GammaCorrection");
    gammaCorrection_.Set(true);
    gammaCorrection_.SetScriptKey(FourCharacterCode("GAMA"));
    Describe(contrast_, {"Contrast", 0.0, 0.0, kHard, 2.0, kSoft, FourCharacterCode("CONT")});
    Describe(gammaCorrectionCorrective_,
             {"GammaCorrectionCorrective", 1.0, 0.0, kHard, 3.0, kSoft, FourCharacterCode("GAMC")});
    Describe(hue_, {"Hue", 0.0, -1.0, kHard, 1.0, kHard, FourCharacterCode("HSLH")});
    Describe(saturation_, {"Saturation", 0.0, -1.0, kHard, 1.0, kHard, FourCharacterCode("HSLS")});
    Describe(lightness_, {"Lightness", 0.0, -1.0, kHard, 1.0, kHard, FourCharacterCode("HSLL")});
    Describe(selectionLow_,
             {"SelectionLow", 0.0, 0.0, kHard, 255.0, kHard, FourCharacterCode("SELL")});
    Describe(selectionHigh_,
             {"SelectionHigh", 255.0, 0.0, kHard, 255.0, kHard, FourCharacterCode("SELH")});
    Describe(selectionSoften_,
             {"SelectionSoften", 0.0, 0.0, kHard, 3.0, kHard, FourCharacterCode("SELS")});
    Describe(selectionClimax_,
             {"SelectionClimax", 0.0, -1.0, kHard, 1.0, kHard, FourCharacterCode("SELC")});
    useSizeSelection_.SetName("UseSizeSelection");
    useSizeSelection_.Set(true);
    useSizeSelection_.SetScriptKey(FourCharacterCode("USES"));
    Describe(randomize_, {"Randomize", 0.05, 0.0, kHard, 1.0, kSoft, 0});
    randomize_.SetPersistent(false);
    randomize_.SetUndoable(false);
    randomizeButton_.SetName("Randomize Button");
    randomizeButton_.SetPersistent(false);
    randomizeButton_.SetUndoable(false);
}

void pfFilterRadialBlur::DescribeLists() {
    mode_.SetName("Mode");
    for (const char* entry : kModeNames) {
        mode_.AddEntry(entry);
    }
    mode_.SetScriptKey(FourCharacterCode("MODE"));
    mode_.Set(kModeAbberative);
    blendMode_.SetName("BlendMode");
    for (const char* entry : kBlendNames) {
        blendMode_.AddEntry(entry);
    }
    blendMode_.SetScriptKey(FourCharacterCode("BLND"));
    selectionShow_.SetName("SelectionShow");
    for (const char* entry : kShowNames) {
        selectionShow_.AddEntry(entry);
    }
    selectionShow_.SetScriptKey(FourCharacterCode("SHOW"));
}

RenderSettings pfFilterRadialBlur::MakeRenderSettings(std::int32_t width,
                                                      std::int32_t height) const {
    RenderSettings settings;
    settings.intensity = intensity_.Get();
    settings.strength = strength_.Get();
    settings.zoomStart = zoomStart_.Get();
    const auto squares =
        static_cast<std::int64_t>(width) * width + static_cast<std::int64_t>(height) * height;
    settings.holdoutPixels = holdoutRadius_.Get() * (std::sqrt(static_cast<double>(squares)) * 0.5);
    settings.invertGradient = invertGradient_.Get();
    settings.hue = hue_.Get();
    settings.saturation = saturation_.Get();
    settings.lightness = lightness_.Get();
    const double gamma = gammaCorrectionCorrective_.Get();
    settings.gammaExponent = 1.0 / (gamma > kSmallestGamma ? gamma : kSmallestGamma);
    settings.contrast = contrast_.Get();
    settings.adjustOn =
        settings.hue != 0.0 || settings.saturation != 0.0 || settings.lightness != 0.0;
    settings.gammaOn = gammaCorrection_.Get();
    settings.mode = mode_.Get();
    settings.show = selectionShow_.Get();
    settings.blend = blendMode_.Get();
    settings.centerX = CenterInPixels(origin_.GetX(), width);
    settings.centerY = CenterInPixels(origin_.GetY(), height);
    settings.selectionLow = selectionLow_.Get() * kSelectionScale;
    settings.selectionHigh = selectionHigh_.Get() * kSelectionScale;
    settings.selectionSoften = selectionSoften_.Get();
    settings.selectionClimax = selectionClimax_.Get();
    settings.useSizeSelection = useSizeSelection_.Get();
    return settings;
}

}  // namespace mv
