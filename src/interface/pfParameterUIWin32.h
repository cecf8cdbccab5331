#pragma once

#include <windows.h>

#include <cstdint>
#include <initializer_list>

#include "parameters/pfParameterUI.h"

namespace mv {

// A control of the dialog: it ties a parameter to one or more child windows and has no value of
// its own. Owned by the filter, driven by the dialog on its thread. Without a window, without a
// parameter or with an id of -1 every operation does nothing.
class pfParameterUIWin32 : public pfParameterUI {
public:
    static constexpr int kNoId = -1;

    virtual bool OwnsId(int id) const;
    // The window with this id has lost the input focus.
    virtual void FocusLost(int id);
    // Whether this module is writing into an edit at the moment, which notifies the dialog as the
    // user's typing does.
    static bool IsWritingText() noexcept;

    // The dialog that holds the windows; null before it opens and after it closed.
    void SetWindow(HWND dialog) noexcept { dialog_ = dialog; }
    // A static text that is enabled and shown with the control.
    void SetLabelId(int id) noexcept { labelId_ = id; }

protected:
    HWND GetWindow() const noexcept { return dialog_; }
    HWND Item(int id) const noexcept;
    bool HasFocus(int id) const noexcept;
    bool ReadNumber(int id, double& value) const noexcept;
    void WriteText(int id, const char* text) const noexcept;
    void WriteNumber(int id, double value) const noexcept;
    void WriteWholeNumber(int id, std::int32_t value) const noexcept;
    // The end of every Refresh: enabled, visible, and repainted.
    void FinishRefresh(std::initializer_list<int> ids) const noexcept;

private:
    HWND dialog_ = nullptr;
    int labelId_ = kNoId;
};

}  // namespace mv
