#include "interface/pfParameterUIListWin32.h"

#include "parameters/pfParameterList.h"

namespace mv {

void pfParameterUIListWin32::Setup() {
    Refresh();
}

void pfParameterUIListWin32::Refresh() {
    const auto* parameter = dynamic_cast<pfParameterList*>(GetParameter());
    const HWND list = Item(listId_);
    if (parameter == nullptr || list == nullptr) {
        return;
    }
    SendMessageA(list, CB_RESETCONTENT, 0, 0);
    for (int i = 0; i < parameter->GetEntryCount(); ++i) {
        SendMessageA(list, CB_ADDSTRING, 0,
                     reinterpret_cast<LPARAM>(parameter->GetEntry(i).c_str()));
    }
    // Entries are counted from 1 in the parameter and from 0 in the window.
    SendMessageA(list, CB_SETCURSEL, static_cast<WPARAM>(parameter->Get() - 1), 0);
    FinishRefresh({listId_});
}

bool pfParameterUIListWin32::ReadWindow() {
    auto* parameter = dynamic_cast<pfParameterList*>(GetParameter());
    const HWND list = Item(listId_);
    if (parameter == nullptr || list == nullptr) {
        return false;
    }
    const LRESULT selected = SendMessageA(list, CB_GETCURSEL, 0, 0);
    return parameter->Set(static_cast<std::int32_t>(selected) + 1);
}

bool pfParameterUIListWin32::OwnsId(int id) const {
    return id != kNoId && id == listId_;
}

}  // namespace mv
