// A filter module for tests: a colour, an angle and a whole number, which the blur has none of, in
// the same dialog. Its picture is the colour itself, with the number in the top left byte.
#include <memory>

#include "frame/pfFilter.h"
#include "interface/pfParameterUIAngleWin32.h"
#include "interface/pfParameterUIIntWin32.h"
#include "interface/pfParameterUIRGBWin32.h"
#include "interface/pfPreview.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterInt.h"
#include "parameters/pfParameterRGB.h"

namespace mv {
namespace {

constexpr int kSwatch = 1201;
constexpr int kDial = 1202;
constexpr int kTurns = 1203;
constexpr int kDegrees = 1204;
constexpr int kCount = 1205;
constexpr int kCountSlider = 1206;

class ColorFilter final : public pfFilter {
public:
    ColorFilter()
        : pfFilter("Colours", "Morvenhale", 1, 0, 0, "A colour, an angle, a number."),
          swatch_(kSwatch),
          dial_(kDial, kTurns, kDegrees),
          counter_(kCount, kCountSlider) {
        tint_.SetName("Tint");
        tint_.SetScriptKeys(hostapi::FourCharacterCode("TINR"), hostapi::FourCharacterCode("TING"),
                            hostapi::FourCharacterCode("TINB"));
        angle_.SetName("Angle");
        angle_.SetScriptKey(hostapi::FourCharacterCode("ANGL"));
        count_.SetName("Count");
        count_.SetScriptKey(hostapi::FourCharacterCode("CNTT"));
        count_.SetMinimum(-20, true);
        count_.SetMaximum(100, true);
        Reset(false);
        Add(tint_, swatch_);
        Add(angle_, dial_);
        Add(count_, counter_);
    }

    const char* GetFilterName() override { return "Colours"; }

    void Reset(bool) override {
        tint_.Set(1.0, 0.5, 0.25);
        angle_.Set(30.0);
        count_.Set(7);
    }

    std::int32_t SelectRenderTemplate(hostapi::FilterRecord* record) override {
        const double channels[3] = {tint_.GetRed(), tint_.GetGreen(), tint_.GetBlue()};
        for (int y = 0; y < record->outRect.bottom - record->outRect.top; ++y) {
            auto* row = static_cast<std::uint8_t*>(record->outData) +
                        std::ptrdiff_t{y} * record->outRowBytes;
            for (int x = 0; x < record->outRect.right - record->outRect.left; ++x) {
                for (int plane = 0; plane < record->planes; ++plane) {
                    // The right half is darker, so that another place is another colour.
                    const bool dark = x * 2 >= record->outRect.right - record->outRect.left;
                    *row++ =
                        static_cast<std::uint8_t>(channels[plane % 3] * 255.0 * (dark ? 0.5 : 1.0));
                }
            }
        }
        return hostapi::noErr;
    }

private:
    void Add(pfParameter& parameter, pfParameterUI& control) {
        control.Bind(&parameter);
        GetControls().push_back(&control);
        GetParameters().Add(&parameter);
    }

    pfParameterRGB tint_;
    pfParameterFloat angle_;
    pfParameterInt count_;
    pfParameterUIRGBWin32 swatch_;
    pfParameterUIAngleWin32 dial_;
    pfParameterUIIntWin32 counter_;
};

}  // namespace
}  // namespace mv

extern "C" __declspec(dllexport) void ENTRYPOINT(std::int16_t selector, void* parameterBlock,
                                                 std::intptr_t* data, std::int16_t* result) {
    static mv::ColorFilter filter;
    filter.Dispatch(selector, parameterBlock, data, result);
}
