// The preset list and the buttons around it.
// Ahead of what builds on it.
#include <windows.h>

#include <commdlg.h>

#include <cstring>
#include <iterator>
#include <list>
#include <new>

#include "diagnostics/Log.h"
#include "frame/pfFilter.h"
#include "interface/LastUsedSettings.h"
#include "interface/ModuleWin32.h"
#include "interface/pfPreviewWin32.h"
#include "resources/ResourceIds.h"

namespace mv {

namespace {

pfPreviewWin32* saveInstance = nullptr;

// A name of this length or more is not remembered while the list is filled anew.
constexpr LRESULT kNameLimit = 255;
constexpr int kNoSelection = -1;

LRESULT SendToList(HWND dialog, UINT message, WPARAM wParam, const char* text) noexcept {
    return SendDlgItemMessageA(dialog, IDC_PRESET_LIST, message, wParam,
                               reinterpret_cast<LPARAM>(text));
}

void SelectWholeName(HWND window) noexcept {
    const HWND edit = GetDlgItem(window, IDC_PRESET_NAME);
    SetFocus(edit);
    SendMessageA(edit, EM_SETSEL, 0, GetWindowTextLengthA(edit));
}

// The file dialog moves the process to the folder that was chosen, and the process is the host's.
class CurrentFolderGuard {
public:
    CurrentFolderGuard() noexcept {
        const DWORD length = GetCurrentDirectoryW(MAX_PATH, folder_);
        known_ = length > 0 && length < MAX_PATH;
    }
    ~CurrentFolderGuard() {
        if (known_) {
            SetCurrentDirectoryW(folder_);
        }
    }
    CurrentFolderGuard(const CurrentFolderGuard&) = delete;
    CurrentFolderGuard& operator=(const CurrentFolderGuard&) = delete;

private:
    wchar_t folder_[MAX_PATH] = {};
    bool known_ = false;
};

}  // namespace

// The selected entry's text. False when nothing is selected or the text is too long.
bool pfPreviewWin32::SelectedPresetName(std::string& name) const {
    if (m_hInterface == nullptr) {
        return false;
    }
    const LRESULT selected = SendToList(m_hInterface, CB_GETCURSEL, 0, nullptr);
    if (selected == CB_ERR) {
        return false;
    }
    const auto index = static_cast<WPARAM>(selected);
    const LRESULT length = SendToList(m_hInterface, CB_GETLBTEXTLEN, index, nullptr);
    if (length == CB_ERR || length >= kNameLimit) {
        return false;
    }
    char text[kNameLimit + 1] = {};
    SendToList(m_hInterface, CB_GETLBTEXT, index, text);
    name = text;
    return true;
}

void pfPreviewWin32::UpdateSettingsList() {
    WriteLog(kTrace, "pfPreviewWin32::UpdateSettingsList()");
    LogScope scope;
    std::string selected;
    const bool remembered = SelectedPresetName(selected);
    if (m_hInterface != nullptr) {
        SendToList(m_hInterface, CB_RESETCONTENT, 0, nullptr);
    }
    std::list<std::string> names;
    if (!pfParameters::GetSettingNames(m_strPresetPath, names, m_pFilter->GetFilterName())) {
        m_strPresetPath.clear();
    }
    WriteLog(kTrace, "m_hInterface(0x", LogPointer{m_hInterface}, ")");
    if (m_hInterface == nullptr) {
        return;
    }
    FillSettingsList(names);
    if (remembered) {
        WriteLog(kTrace, "select setting: ", selected);
        const LRESULT found = SendToList(m_hInterface, CB_FINDSTRINGEXACT,
                                         static_cast<WPARAM>(kNoSelection), selected.c_str());
        if (found != CB_ERR) {
            SendToList(m_hInterface, CB_SETCURSEL, static_cast<WPARAM>(found), nullptr);
        }
    }
}

void pfPreviewWin32::FillSettingsList(const std::list<std::string>& names) {
    EnableWindow(GetDlgItem(m_hInterface, IDC_DELETE_PRESET), !names.empty());
    WriteLog(kTrace, names.empty() ? "disabled delete" : "enabled delete");
    const bool fileChosen = !m_strPresetPath.empty();
    EnableWindow(GetDlgItem(m_hInterface, IDC_SAVE_PRESET), fileChosen);
    EnableWindow(GetDlgItem(m_hInterface, IDC_PRESET_LIST), fileChosen);
    WriteLog(kTrace, fileChosen ? "enabled save and combo" : "disabled save and combo");
    for (const std::string& name : names) {
        WriteLog(kTrace, "about to add string: ", name);
        SendToList(m_hInterface, CB_ADDSTRING, 0, name.c_str());
    }
}

void pfPreviewWin32::SaveCurrentPreset() {
    GetDlgItemTextA(m_hInterface, IDC_PRESET_LIST, m_szPresetName, kPresetNameCapacity);
    const INT_PTR result =
        DialogBoxParamA(GetDllInstance(), MAKEINTRESOURCEA(IDD_SAVE_PRESET), m_hInterface,
                        SaveProcedure, reinterpret_cast<LPARAM>(this));
    if (result == -1 || m_szPresetName[0] == '\0') {
        return;
    }
    m_pFilter->GetParameters().SaveSettings(m_szPresetName, m_strPresetPath,
                                            m_pFilter->GetFilterName());
    UpdateSettingsList();
    SendToList(m_hInterface, CB_SELECTSTRING, static_cast<WPARAM>(kNoSelection), m_szPresetName);
}

INT_PTR CALLBACK pfPreviewWin32::SaveProcedure(HWND window, UINT message, WPARAM wParam,
                                               LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        saveInstance = reinterpret_cast<pfPreviewWin32*>(lParam);
        SetDlgItemTextA(window, IDC_PRESET_NAME, saveInstance->m_szPresetName);
        SelectWholeName(window);
        // The edit has the focus already.
        return FALSE;
    }
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) {
        return FALSE;
    }
    if (LOWORD(wParam) == IDOK) {
        if (saveInstance->AcceptPresetName(window)) {
            EndDialog(window, IDOK);
        } else {
            SelectWholeName(window);
        }
        return TRUE;
    }
    if (LOWORD(wParam) == IDCANCEL) {
        // The empty name is what says that nothing is to be saved.
        saveInstance->m_szPresetName[0] = '\0';
        EndDialog(window, IDCANCEL);
        return TRUE;
    }
    return FALSE;
}

// Takes the name without blanks, which no preset name may hold. False when the user does not
// want to overwrite the preset of that name.
bool pfPreviewWin32::AcceptPresetName(HWND window) {
    GetDlgItemTextA(window, IDC_PRESET_NAME, m_szPresetName, kPresetNameCapacity);
    for (char& c : m_szPresetName) {
        if (c == ' ') {
            c = '_';
        }
    }
    SetDlgItemTextA(window, IDC_PRESET_NAME, m_szPresetName);
    if (SendToList(m_hInterface, CB_FINDSTRINGEXACT, static_cast<WPARAM>(kNoSelection),
                   m_szPresetName) == CB_ERR) {
        return true;
    }
    return MessageBoxA(m_hInterface, "There already is a preset with that name.\nOverwrite it? ",
                       "Overwrite Setting?", MB_YESNO | MB_ICONQUESTION) == IDYES;
}

void pfPreviewWin32::DeleteCurrentPreset() {
    const LRESULT selected = SendToList(m_hInterface, CB_GETCURSEL, 0, nullptr);
    if (selected == CB_ERR || MessageBoxA(m_hInterface, "Really delete this preset?",
                                          "Delete Preset?", MB_YESNO | MB_ICONQUESTION) != IDYES) {
        return;
    }
    char name[kPresetNameCapacity] = {};
    GetDlgItemTextA(m_hInterface, IDC_PRESET_LIST, name, kPresetNameCapacity);
    const LRESULT count = SendToList(m_hInterface, CB_GETCOUNT, 0, nullptr);
    LRESULT neighbour = selected == 0 ? 1 : selected - 1;
    if (neighbour >= count) {
        neighbour = kNoSelection;
    }
    SendToList(m_hInterface, CB_SETCURSEL, static_cast<WPARAM>(neighbour), nullptr);
    pfParameters::DeleteSettings(name, m_strPresetPath);
    UpdateSettingsList();
    name[0] = '\0';
    GetDlgItemTextA(m_hInterface, IDC_PRESET_LIST, name, kPresetNameCapacity);
    pfParameters& parameters = m_pFilter->GetParameters();
    parameters.LoadSettings(name, m_strPresetPath, &m_pFilter->GetUndoBuffer());
    parameters.UpdateAllUI();
    // No new frame is asked for: the deletion is meant to leave the picture as it is.
}

void pfPreviewWin32::LoadSelectedPreset() {
    std::string name;
    if (SelectedPresetName(name)) {
        m_pFilter->GetParameters().LoadSettings(name, m_strPresetPath, &m_pFilter->GetUndoBuffer());
    }
    UpdateSettingsList();
}

void pfPreviewWin32::SetPresetPath(const std::string& path) {
    if (&path != &m_strPresetPath) {
        m_strPresetPath = path;
    }
    UpdateSettingsList();
    SendToList(m_hInterface, CB_SETCURSEL, 0, nullptr);
    LoadSelectedPreset();
}

void pfPreviewWin32::OnChangeSettingFile() {
    WriteLog(kTrace, "pfPreviewWin32::OnChangeSettingFile()");
    LogScope scope;
    const CurrentFolderGuard currentFolder;
    char path[kPresetPathCapacity] = {};
    if (m_strPresetPath.size() < std::size(path)) {
        std::memcpy(path, m_strPresetPath.data(), m_strPresetPath.size());
    }
    OPENFILENAMEA open = {};
    open.lStructSize = sizeof open;
    open.hwndOwner = m_hInterface;
    open.lpstrFilter = "Presets File (*.cfg)\0*.cfg\0";
    open.nFilterIndex = 1;
    open.lpstrFile = path;
    open.nMaxFile = kPresetPathCapacity;
    open.lpstrTitle = "Open Presets File";
    open.lpstrDefExt = "cfg";
    // A file that does not exist yet is accepted: that is how a new preset file comes to be.
    open.Flags = OFN_HIDEREADONLY | OFN_EXPLORER | OFN_LONGNAMES | OFN_ENABLESIZING;
    if (!GetOpenFileNameA(&open)) {
        return;
    }
    WriteLog(kTrace, "Selected File(", path, ")");
    std::string owner = m_pFilter->GetFilterName();
    if (pfParameters::IsSettingFileValid(path, owner)) {
        m_strPresetPath = path;
        UpdateSettingsList();
        return;
    }
    const std::string text = owner == m_pFilter->GetFilterName()
                                 ? "The file you selected is no valid Settingsfile."
                                 : "The selected settings file belongs to the Filter: " + owner;
    MessageBoxA(m_hInterface, text.c_str(), "Error", MB_ICONEXCLAMATION);
}

}  // namespace mv
