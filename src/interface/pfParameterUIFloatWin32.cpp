#include "interface/pfParameterUIFloatWin32.h"

#include <commctrl.h>

#include "interface/ControlValues.h"
#include "parameters/pfParameterFloat.h"

namespace mv {

pfParameterFloat* pfParameterUIFloatWin32::Parameter() const noexcept {
    return GetWindow() == nullptr ? nullptr : dynamic_cast<pfParameterFloat*>(GetParameter());
}

void pfParameterUIFloatWin32::Setup() {
    const pfParameterFloat* parameter = Parameter();
    if (parameter == nullptr) {
        return;
    }
    if (const HWND slider = Item(sliderId_)) {
        const SliderRange range =
            FloatSliderRange(parameter->GetMinimum(), parameter->GetMaximum());
        SendMessageA(slider, TBM_SETRANGEMIN, FALSE, range.minimum);
        SendMessageA(slider, TBM_SETRANGEMAX, FALSE, range.maximum);
        SendMessageA(slider, TBM_SETPAGESIZE, 0, range.page);
    }
    Refresh();
}

void pfParameterUIFloatWin32::Refresh() {
    const pfParameterFloat* parameter = Parameter();
    if (parameter == nullptr) {
        return;
    }
    if (const HWND slider = Item(sliderId_); slider != nullptr && !HasFocus(sliderId_)) {
        const SliderDetour detour = FloatSliderDetour(parameter->Get());
        SendMessageA(slider, TBM_SETPOS, FALSE, detour.first);
        SendMessageA(slider, TBM_SETPOS, TRUE, detour.second);
        SendMessageA(slider, TBM_SETPOS, FALSE, detour.third);
        SendMessageA(slider, TBM_SETPOS, TRUE, detour.last);
    }
    if (Item(editId_) != nullptr && !HasFocus(editId_)) {
        WriteNumber(editId_, parameter->Get());
    }
    FinishRefresh({editId_, sliderId_});
}

bool pfParameterUIFloatWin32::ReadWindow() {
    if (HasFocus(editId_)) {
        return ReadEdit();
    }
    pfParameterFloat* parameter = Parameter();
    if (parameter == nullptr || !HasFocus(sliderId_)) {
        return false;
    }
    const auto position =
        static_cast<std::int32_t>(SendMessageA(Item(sliderId_), TBM_GETPOS, 0, 0));
    // Set tells everybody that the value has changed.
    return parameter->Set(FloatFromSlider(position));
}

bool pfParameterUIFloatWin32::ReadEdit() {
    pfParameterFloat* parameter = Parameter();
    double value = 0.0;
    if (parameter == nullptr || !ReadNumber(editId_, value)) {
        return false;
    }
    const FloatLimits limits = {parameter->GetMinimum(), parameter->GetMaximum(),
                                parameter->GetMinimumHard(), parameter->GetMaximumHard()};
    return parameter->Set(LimitTypedValue(value, limits));
}

bool pfParameterUIFloatWin32::OwnsId(int id) const {
    return id != kNoId && (id == editId_ || id == sliderId_);
}

void pfParameterUIFloatWin32::FocusLost(int id) {
    if (id != kNoId && id == editId_) {
        ReadEdit();
        Refresh();
    }
}

}  // namespace mv
