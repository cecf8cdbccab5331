#include "interface/pfPreviewWin32.h"

#include <commctrl.h>

#include "diagnostics/Log.h"
#include "frame/pfFilter.h"
#include "interface/ModuleWin32.h"
#include "interface/PreviewState.h"
#include "interface/pfParameterUIWin32.h"
#include "parameters/pfParameter.h"
#include "parameters/pfUndo.h"
#include "resources/ResourceIds.h"

namespace mv {

namespace {

ULONG_PTR SetClassIcon(HWND window, ULONG_PTR icon) noexcept {
    return SetClassLongPtrA(window, GCLP_HICON, static_cast<LONG_PTR>(icon));
}

ULONG_PTR FilterIcon() noexcept {
    return reinterpret_cast<ULONG_PTR>(LoadIconA(GetDllInstance(), MAKEINTRESOURCEA(IDI_FILTER)));
}

HWND OwnerWindow(const hostapi::FilterRecord* record) noexcept {
    return record == nullptr || record->platformData == nullptr
               ? nullptr
               : static_cast<HWND>(record->platformData->hwnd);
}

// Its messages come through our loop, and a click in it could start the filter a second time. A
// window of another thread is left alone: disabling it would wait for that thread.
HWND DisableOwner(HWND owner) noexcept {
    const bool ours =
        owner != nullptr && GetWindowThreadProcessId(owner, nullptr) == GetCurrentThreadId();
    if (!ours || !IsWindowEnabled(owner)) {
        return nullptr;
    }
    EnableWindow(owner, FALSE);
    return owner;
}

}  // namespace

bool pfPreviewWin32::Show(pfFilter* filter, hostapi::FilterRecord* filterRecord,
                          std::list<pfParameterUI*>* controls) {
    Begin(filter, filterRecord, controls);
    WriteLog(kTrace, "pfPreviewWin32::Show( pFilter(0x", LogPointer{filter}, "), pFilterRecord(0x",
             LogPointer{filterRecord}, ") )");
    LogScope scope;
    bool accepted = false;
    if (OpenPreviewWindow()) {
        if (OpenInterfaceWindow()) {
            accepted = RunDialog();
            CloseInterfaceWindow();
        }
        ClosePreviewWindow();
    }
    previewClock = 0;
    if (accepted) {
        WriteLastUsedSettings();
    }
    FreeBuffer();
    WriteLog(kTrace, "pfPreviewWin32::Show( return(", accepted, ") )");
    return accepted;
}

void pfPreviewWin32::Begin(pfFilter* filter, hostapi::FilterRecord* filterRecord,
                           std::list<pfParameterUI*>* controls) noexcept {
    m_pFilter = filter;
    m_pFilterRecord = filterRecord;
    m_pControls = controls;
    m_nScale = 1;
    m_nRequestedScale = 1;
    m_nDetailLevel = 0;
    m_fDisplayScale = 1.0;
    m_nOffset = {};
    m_pDragPosition = nullptr;
    m_pPickColor = nullptr;
    m_pDragAngle = nullptr;
    m_bDragging = false;
    m_bPanning = false;
    m_bImageReady = false;
    m_bPictureRequested = false;
    m_bPictureDelivered = false;
    m_bQuitTaken = false;
    m_bQuitLeftOver = false;
    m_hDisabledOwner = nullptr;
    scrollDragActive = false;
    const INITCOMMONCONTROLSEX sliders = {sizeof sliders, ICC_BAR_CLASSES};
    InitCommonControlsEx(&sliders);
}

bool pfPreviewWin32::OpenPreviewWindow() noexcept {
    const HWND owner = OwnerWindow(m_pFilterRecord);
    m_hPreview = CreateDialogParamA(GetDllInstance(), MAKEINTRESOURCEA(IDD_PREVIEW), owner,
                                    PreviewProcedure, reinterpret_cast<LPARAM>(this));
    if (m_hPreview == nullptr) {
        WriteLog(kError, kErrorPrefix, "Failed to create Preview Dialog. GetLastError(",
                 GetLastError(), ")");
        return false;
    }
    m_hDisabledOwner = DisableOwner(owner);
    m_hPreviewClassIcon = SetClassIcon(m_hPreview, FilterIcon());
    return true;
}

bool pfPreviewWin32::OpenInterfaceWindow() noexcept {
    m_hInterface = CreateDialogParamA(GetDllInstance(), MAKEINTRESOURCEA(IDD_INTERFACE), m_hPreview,
                                      InterfaceProcedure, reinterpret_cast<LPARAM>(this));
    if (m_hInterface == nullptr) {
        WriteLog(kError, kErrorPrefix, "Failed to create Interface Dialog. GetLastError(",
                 GetLastError(), ")");
        return false;
    }
    m_hInterfaceClassIcon = SetClassIcon(m_hInterface, FilterIcon());
    m_hPickCursor = static_cast<HCURSOR>(LoadImageA(
        GetDllInstance(), MAKEINTRESOURCEA(IDC_PICK_CURSOR), IMAGE_CURSOR, 0, 0, LR_DEFAULTCOLOR));
    m_hSavedCursor = reinterpret_cast<HCURSOR>(GetClassLongPtrA(m_hPreview, GCLP_HCURSOR));
    return true;
}

bool pfPreviewWin32::RunDialog() {
    FitToWindow();
    for (pfParameterUI* element : *m_pControls) {
        if (auto* control = dynamic_cast<pfParameterUIWin32*>(element)) {
            control->SetWindow(m_hInterface);
            control->Setup();
        }
    }
    m_pFilter->GetUndoBuffer().SetEnabled(true);
    UpdateSettingsList();
    WriteLog(kTrace, "Updated Settings List");
    UpdateUndoButtons();
    WriteLog(kTrace, "Updated Undo Buttons");
    ShowWindow(m_hInterface, SW_SHOW);
    ShowWindow(m_hPreview, SW_SHOW);
    // The keyboard works in the interface alone. Where no window manager keeps owned windows above
    // their owners, this also brings it to the front.
    SetActiveWindow(m_hInterface);
    WriteLog(kTrace, "windows up");
    AssignScaleFactor(m_nRequestedScale);
    WriteLog(kTrace, "assigned scale factor");
    m_pFilter->UpdateInterface(m_pFilterRecord);
    WriteLog(kTrace, "pre show done. Going into message loop");
    previewDirty = false;
    AskForFrame();
    return RunMessageLoop() == 1;
}

void pfPreviewWin32::CloseInterfaceWindow() noexcept {
    if (m_hDisabledOwner != nullptr) {
        EnableWindow(m_hDisabledOwner, TRUE);
    }
    // A right click may have left the class without a cursor; it is the host's class as well.
    SetClassLongPtrA(m_hPreview, GCLP_HCURSOR, reinterpret_cast<LONG_PTR>(m_hSavedCursor));
    SetParent(m_hPreview, nullptr);
    SetClassIcon(m_hInterface, m_hInterfaceClassIcon);
    DestroyWindow(m_hInterface);
    m_hInterface = nullptr;
    for (pfParameterUI* element : *m_pControls) {
        if (auto* control = dynamic_cast<pfParameterUIWin32*>(element)) {
            control->SetWindow(nullptr);
        }
    }
}

void pfPreviewWin32::ClosePreviewWindow() noexcept {
    if (m_hDisabledOwner != nullptr) {
        EnableWindow(m_hDisabledOwner, TRUE);
        m_hDisabledOwner = nullptr;
    }
    SetClassIcon(m_hPreview, m_hPreviewClassIcon);
    DestroyWindow(m_hPreview);
    m_hPreview = nullptr;
    if (m_hPickCursor != nullptr) {
        DestroyCursor(m_hPickCursor);
        m_hPickCursor = nullptr;
    }
}

int pfPreviewWin32::RunMessageLoop() {
    MSG message = {};
    for (;;) {
        BOOL got = GetMessageA(&message, nullptr, 0, 0);
        if (got == 0 || got == -1) {
            break;
        }
        got = ServeQueue(message);
        m_bQuitTaken = got == 0;
        // A click on the zoom buttons during the last frame has only left its wish behind.
        while (previewDirty || m_nRequestedScale != m_nScale) {
            if (RenderUntilCurrent() != m_pFilter->StatusOk()) {
                break;
            }
        }
        if (got == 0 || got == -1) {
            break;
        }
    }
    if (m_bQuitLeftOver) {
        // It was meant for this loop, and the host would end if it found it.
        MSG leftOver;
        PeekMessageA(&leftOver, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);
    }
    return message.message == WM_QUIT ? static_cast<int>(message.wParam) : 0;
}

// Serves the message in hand and every one that waits behind it. Gives the result of the last
// GetMessage.
BOOL pfPreviewWin32::ServeQueue(MSG& message) {
    for (;;) {
        if (!IsDialogMessageA(m_hInterface, &message)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
        MSG waiting;
        if (!PeekMessageA(&waiting, nullptr, 0, 0, PM_NOREMOVE)) {
            return TRUE;
        }
        const BOOL got = GetMessageA(&message, nullptr, 0, 0);
        if (got == 0 || got == -1) {
            return got;
        }
    }
}

void pfPreviewWin32::ParametersChanged() {
    AskForFrame();
    m_bChangePending = true;
    UpdateUndoButtons();
}

// Input that another thread sends is served inside GetMessage, which does not return for it: an
// empty message of our own makes the loop look at the flag.
void pfPreviewWin32::AskForFrame() noexcept {
    if (!previewDirty.exchange(true) && m_hPreview != nullptr) {
        PostMessageA(m_hPreview, WM_NULL, 0, 0);
    }
}

void pfPreviewWin32::UpdateUndoButtons() noexcept {
    if (m_hInterface == nullptr) {
        return;
    }
    const pfUndoBuffer& undoBuffer = m_pFilter->GetUndoBuffer();
    EnableWindow(GetDlgItem(m_hInterface, IDC_UNDO), undoBuffer.CanUndo());
    EnableWindow(GetDlgItem(m_hInterface, IDC_REDO), undoBuffer.CanRedo());
}

pfParameterUIWin32* pfPreviewWin32::FindControl(int id) const noexcept {
    for (pfParameterUI* element : *m_pControls) {
        auto* control = dynamic_cast<pfParameterUIWin32*>(element);
        if (control != nullptr && control->OwnsId(id)) {
            return control;
        }
    }
    return nullptr;
}

void pfPreviewWin32::PushUndoStep(pfParameter* parameter) {
    pfUndoBuffer& undoBuffer = m_pFilter->GetUndoBuffer();
    undoBuffer.Push(parameter->CreateUndo());
    undoBuffer.NextStep();
    UpdateUndoButtons();
}

bool pfPreviewWin32::ControlChanged(int id, bool makeUndo) {
    pfParameterUIWin32* control = FindControl(id);
    if (control == nullptr || control->GetParameter() == nullptr) {
        return false;
    }
    pfParameter* parameter = control->GetParameter();
    pfUndo* record = makeUndo && parameter->GetUndoable() ? parameter->CreateUndo() : nullptr;
    if (!control->ReadWindow()) {
        pfUndo::Release(record);
        return false;
    }
    ParametersChanged();
    if (record != nullptr) {
        pfUndoBuffer& undoBuffer = m_pFilter->GetUndoBuffer();
        undoBuffer.Push(record);
        undoBuffer.NextStep();
        UpdateUndoButtons();
    }
    return true;
}

}  // namespace mv
