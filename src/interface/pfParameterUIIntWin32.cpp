#include "interface/pfParameterUIIntWin32.h"

#include <commctrl.h>

#include "interface/ControlValues.h"
#include "interface/SafeNumber.h"
#include "parameters/pfParameterInt.h"

namespace mv {

pfParameterInt* pfParameterUIIntWin32::Parameter() const noexcept {
    return GetWindow() == nullptr ? nullptr : dynamic_cast<pfParameterInt*>(GetParameter());
}

void pfParameterUIIntWin32::Setup() {
    const pfParameterInt* parameter = Parameter();
    if (parameter == nullptr) {
        return;
    }
    if (const HWND slider = Item(sliderId_)) {
        const SliderRange range = IntSliderRange(parameter->GetMinimum(), parameter->GetMaximum());
        SendMessageA(slider, TBM_SETRANGEMIN, FALSE, range.minimum);
        SendMessageA(slider, TBM_SETRANGEMAX, FALSE, range.maximum);
        SendMessageA(slider, TBM_SETPAGESIZE, 0, range.page);
    }
    Refresh();
}

void pfParameterUIIntWin32::Refresh() {
    const pfParameterInt* parameter = Parameter();
    if (parameter == nullptr) {
        return;
    }
    if (const HWND slider = Item(sliderId_); slider != nullptr && !HasFocus(sliderId_)) {
        const SliderDetour detour = IntSliderDetour(parameter->Get());
        SendMessageA(slider, TBM_SETPOS, FALSE, detour.first);
        SendMessageA(slider, TBM_SETPOS, TRUE, detour.second);
        SendMessageA(slider, TBM_SETPOS, FALSE, detour.third);
        SendMessageA(slider, TBM_SETPOS, TRUE, detour.last);
    }
    if (Item(editId_) != nullptr && !HasFocus(editId_)) {
        WriteWholeNumber(editId_, parameter->Get());
    }
    FinishRefresh({editId_, sliderId_});
}

bool pfParameterUIIntWin32::ReadWindow() {
    if (HasFocus(editId_)) {
        return ReadEdit();
    }
    pfParameterInt* parameter = Parameter();
    if (parameter == nullptr || !HasFocus(sliderId_)) {
        return false;
    }
    const auto position =
        static_cast<std::int32_t>(SendMessageA(Item(sliderId_), TBM_GETPOS, 0, 0));
    // Set tells everybody that the value has changed.
    return parameter->Set(position);
}

bool pfParameterUIIntWin32::ReadEdit() {
    pfParameterInt* parameter = Parameter();
    double value = 0.0;
    if (parameter == nullptr || !ReadNumber(editId_, value)) {
        return false;
    }
    return parameter->Set(TruncateToInt(value));
}

bool pfParameterUIIntWin32::OwnsId(int id) const {
    return id != kNoId && (id == editId_ || id == sliderId_);
}

void pfParameterUIIntWin32::FocusLost(int id) {
    if (id != kNoId && id == editId_) {
        ReadEdit();
        Refresh();
    }
}

}  // namespace mv
