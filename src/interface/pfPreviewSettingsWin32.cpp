// What is remembered between runs: window places, switches, the preset file, the last values.
#include <string>

#include "diagnostics/Log.h"
#include "frame/pfFilter.h"
#include "interface/InterfaceSettings.h"
#include "interface/LastUsedSettings.h"
#include "interface/PreviewState.h"
#include "interface/pfPreviewWin32.h"
#include "platform/KeyValueStore.h"
#include "resources/ResourceIds.h"

namespace mv {

namespace {

ScreenSize VirtualScreen() noexcept {
    return {GetSystemMetrics(SM_CXVIRTUALSCREEN), GetSystemMetrics(SM_CYVIRTUALSCREEN)};
}

void WriteNumber(KeyValueStore& store, const char* name, std::int32_t value) noexcept {
    store.Write(name, ValueKind::Number, &value, sizeof value);
}

template <class Flag>
void WriteSwitch(KeyValueStore& store, const char* name, const Flag& flag) noexcept {
    const std::uint8_t value = flag ? 1 : 0;
    store.Write(name, ValueKind::Binary, &value, sizeof value);
}

bool NormalRect(HWND window, WINDOWPLACEMENT& placement) noexcept {
    placement = {};
    placement.length = sizeof placement;
    return GetWindowPlacement(window, &placement) != FALSE;
}

}  // namespace

void pfPreviewWin32::RestoreInterface(HWND window) {
    InterfaceSettings settings;
    settings.presetPath = m_strPresetPath;
    settings.showHandle = showHandle;
    settings.interruptible = interruptible;
    if (const auto store = OpenKeyValueStore(kSettingsKey)) {
        SetFocus(GetDlgItem(window, IDOK));
        ReadInterfaceSettings(*store, VirtualScreen(), settings);
        m_strPresetPath = settings.presetPath;
        WriteLog(kTrace, "UIProcedure - WM_INITDIALOG: PresetPath(", m_strPresetPath, ") )");
        showHandle = settings.showHandle;
        interruptible = settings.interruptible;
    }
    CheckDlgButton(window, IDC_HIDE_HANDLE, showHandle ? BST_UNCHECKED : BST_CHECKED);
    CheckDlgButton(window, IDC_FIXED_PREVIEW, interruptible ? BST_UNCHECKED : BST_CHECKED);
    SetWindowPos(window, nullptr, settings.x, settings.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    ReadLastUsedSettings();
}

void pfPreviewWin32::StoreInterface(HWND window) noexcept {
    WINDOWPLACEMENT placement;
    if (!NormalRect(window, placement)) {
        return;
    }
    const auto store = CreateKeyValueStore(kSettingsKey);
    if (!store) {
        return;
    }
    WriteNumber(*store, kInterfaceX, placement.rcNormalPosition.left);
    WriteNumber(*store, kInterfaceY, placement.rcNormalPosition.top);
    store->Write(kPresetPath, ValueKind::Text, m_strPresetPath.c_str(),
                 static_cast<std::uint32_t>(m_strPresetPath.size() + 1));
    WriteSwitch(*store, kHideHandle, showHandle);
    WriteSwitch(*store, kFixedPreview, interruptible);
}

void pfPreviewWin32::RestorePreview(HWND window) noexcept {
    WindowPlacement placement = kDefaultPreviewPlacement;
    if (const auto store = OpenKeyValueStore(kSettingsKey)) {
        ReadPreviewPlacement(*store, VirtualScreen(), placement);
    } else {
        placement = FirstPreviewPlacement(
            {GetSystemMetrics(SM_CXFULLSCREEN), GetSystemMetrics(SM_CYFULLSCREEN)});
    }
    SetWindowPos(window, nullptr, placement.x, placement.y, placement.width, placement.height,
                 SWP_NOZORDER);
    if (OpensMaximised(placement.state)) {
        ShowWindow(window, SW_SHOWMAXIMIZED);
    }
}

void pfPreviewWin32::StorePreview(HWND window) noexcept {
    WINDOWPLACEMENT placement;
    if (!NormalRect(window, placement)) {
        return;
    }
    const auto store = CreateKeyValueStore(kSettingsKey);
    if (!store) {
        return;
    }
    const RECT& rect = placement.rcNormalPosition;
    WriteNumber(*store, kPreviewX, rect.left);
    WriteNumber(*store, kPreviewY, rect.top);
    WriteNumber(*store, kPreviewWidth, rect.right - rect.left);
    WriteNumber(*store, kPreviewHeight, rect.bottom - rect.top);
    WriteNumber(*store, kPreviewState, static_cast<std::int32_t>(placement.showCmd));
}

void pfPreviewWin32::WriteLastUsedSettings() noexcept {
    WriteLog(kTrace, "pfPreviewWin32::WriteLastUsedSettings()");
    if (const auto store = CreateKeyValueStore(kLastUsedKey)) {
        WriteLastUsed(m_pFilter->GetParameters(), *store);
    }
}

void pfPreviewWin32::ReadLastUsedSettings() {
    WriteLog(kTrace, "pfPreviewWin32::ReadLastUsedSettings()");
    if (const auto store = OpenKeyValueStore(kLastUsedKey)) {
        ReadLastUsed(m_pFilter->GetParameters(), *store);
    }
}

}  // namespace mv
