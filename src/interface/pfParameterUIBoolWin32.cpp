#include "interface/pfParameterUIBoolWin32.h"

#include "parameters/pfParameterBool.h"

namespace mv {

void pfParameterUIBoolWin32::Setup() {
    Refresh();
}

void pfParameterUIBoolWin32::Refresh() {
    const auto* parameter = dynamic_cast<pfParameterBool*>(GetParameter());
    const HWND check = Item(checkId_);
    if (parameter == nullptr || check == nullptr) {
        return;
    }
    SendMessageA(check, BM_SETCHECK, parameter->Get() ? BST_CHECKED : BST_UNCHECKED, 0);
    FinishRefresh({checkId_});
}

bool pfParameterUIBoolWin32::ReadWindow() {
    auto* parameter = dynamic_cast<pfParameterBool*>(GetParameter());
    if (parameter == nullptr || !HasFocus(checkId_)) {
        return false;
    }
    const LRESULT state = SendMessageA(Item(checkId_), BM_GETCHECK, 0, 0);
    return state != BST_INDETERMINATE && parameter->Set(state == BST_CHECKED);
}

bool pfParameterUIBoolWin32::OwnsId(int id) const {
    return id != kNoId && id == checkId_;
}

}  // namespace mv
