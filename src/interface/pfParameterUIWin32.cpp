#include "interface/pfParameterUIWin32.h"

#include "interface/NumberText.h"

namespace mv {

namespace {

constexpr int kTypedCapacity = 51;

// Texts being written, one inside the other. Only the dialog's thread writes any.
int textsBeingWritten = 0;

}  // namespace

bool pfParameterUIWin32::OwnsId(int) const {
    return false;
}

void pfParameterUIWin32::FocusLost(int) {}

bool pfParameterUIWin32::IsWritingText() noexcept {
    return textsBeingWritten > 0;
}

HWND pfParameterUIWin32::Item(int id) const noexcept {
    return dialog_ == nullptr || id == kNoId ? nullptr : GetDlgItem(dialog_, id);
}

bool pfParameterUIWin32::HasFocus(int id) const noexcept {
    const HWND item = Item(id);
    return item != nullptr && GetFocus() == item;
}

bool pfParameterUIWin32::ReadNumber(int id, double& value) const noexcept {
    char text[kTypedCapacity] = {};
    if (Item(id) == nullptr) {
        return false;
    }
    GetDlgItemTextA(dialog_, id, text, kTypedCapacity);
    return ParseNumber(text, value);
}

void pfParameterUIWin32::WriteText(int id, const char* text) const noexcept {
    ++textsBeingWritten;
    SetDlgItemTextA(dialog_, id, text);
    --textsBeingWritten;
}

void pfParameterUIWin32::WriteNumber(int id, double value) const noexcept {
    char text[kNumberCapacity];
    FormatNumber(value, text);
    WriteText(id, text);
}

void pfParameterUIWin32::WriteWholeNumber(int id, std::int32_t value) const noexcept {
    ++textsBeingWritten;
    SetDlgItemInt(dialog_, id, static_cast<UINT>(value), TRUE);
    --textsBeingWritten;
}

void pfParameterUIWin32::FinishRefresh(std::initializer_list<int> ids) const noexcept {
    const auto show = [this](int id) {
        if (const HWND item = Item(id)) {
            EnableWindow(item, GetEnabled());
            ShowWindow(item, GetVisible() ? SW_SHOW : SW_HIDE);
        }
    };
    for (const int id : ids) {
        show(id);
    }
    show(labelId_);
    for (const int id : ids) {
        RECT rect;
        const HWND item = Item(id);
        if (item != nullptr && GetWindowRect(item, &rect)) {
            POINT corners[2] = {{rect.left, rect.top}, {rect.right, rect.bottom}};
            ScreenToClient(dialog_, &corners[0]);
            ScreenToClient(dialog_, &corners[1]);
            rect = {corners[0].x, corners[0].y, corners[1].x, corners[1].y};
            InvalidateRect(dialog_, &rect, FALSE);
        }
    }
}

}  // namespace mv
