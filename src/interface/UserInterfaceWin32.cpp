#include "interface/UserInterface.h"

#include <windows.h>

#include "interface/ModuleWin32.h"
#include "interface/NumberText.h"
#include "interface/pfParameterUIBoolWin32.h"
#include "interface/pfParameterUIFloatWin32.h"
#include "interface/pfParameterUIListWin32.h"
#include "interface/pfParameterUIPositionWin32.h"
#include "interface/pfPreviewWin32.h"
#include "resources/ResourceIds.h"

namespace mv {

namespace {

// The name, the version and the description, with room to spare.
constexpr std::size_t kAboutCapacity = 2048;
char aboutText[kAboutCapacity] = {};

void StoreAboutText(const char* text) noexcept {
    TextWriter writer(aboutText);
    writer.Append(text == nullptr ? "" : text);
    writer.Append("\n");
}

INT_PTR CALLBACK AboutProcedure(HWND window, UINT message, WPARAM wParam, LPARAM) {
    if (message == WM_INITDIALOG) {
        SetDlgItemTextA(window, IDC_ABOUT_TEXT, aboutText);
        return TRUE;
    }
    // The close box comes as IDCANCEL.
    if (message == WM_COMMAND && (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL)) {
        EndDialog(window, IDOK);
        return TRUE;
    }
    return FALSE;
}

}  // namespace

std::unique_ptr<pfPreview> CreatePreview() {
    return std::make_unique<pfPreviewWin32>();
}

std::unique_ptr<pfParameterUI> CreatePositionControl(int editIdX, int editIdY) {
    return std::make_unique<pfParameterUIPositionWin32>(editIdX, editIdY);
}

std::unique_ptr<pfParameterUI> CreateFloatControl(int editId, int sliderId) {
    return std::make_unique<pfParameterUIFloatWin32>(editId, sliderId);
}

std::unique_ptr<pfParameterUI> CreateBoolControl(int checkId) {
    return std::make_unique<pfParameterUIBoolWin32>(checkId);
}

std::unique_ptr<pfParameterUI> CreateListControl(int listId) {
    return std::make_unique<pfParameterUIListWin32>(listId);
}

void ShowAbout(const char* text) noexcept {
    StoreAboutText(text);
    DialogBoxParamA(GetDllInstance(), MAKEINTRESOURCEA(IDD_ABOUT), nullptr, AboutProcedure, 0);
}

void ShowErrorBox(const hostapi::FilterRecord* filterRecord, const char* caption,
                  const char* text) noexcept {
    HWND owner = nullptr;
    if (filterRecord != nullptr && filterRecord->platformData != nullptr) {
        owner = static_cast<HWND>(filterRecord->platformData->hwnd);
    }
    MessageBoxA(owner, text, caption, MB_OK | MB_ICONERROR);
}

// Messages that are served here do not pass through the dialog's keyboard handling: it is meant.
DrainResult DrainMessages() noexcept {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE)) {
        const BOOL got = GetMessageA(&message, nullptr, 0, 0);
        if (got == -1) {
            continue;
        }
        if (got == 0) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return DrainResult::Quit;
        }
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return DrainResult::Done;
}

}  // namespace mv
