// The interface window's messages: buttons, controls and sliders.
#include <windowsx.h>

#include <new>

#include "diagnostics/Log.h"
#include "frame/pfFilter.h"
#include "interface/PreviewState.h"
#include "interface/SliderDrag.h"
#include "interface/pfParameterUIAngleWin32.h"
#include "interface/pfPreviewWin32.h"
#include "resources/ResourceIds.h"

namespace mv {

namespace {

pfPreviewWin32* interfaceInstance = nullptr;

// Buttons, lists and edits number their notifications apart, and the dialog looks only at these.
constexpr int kClicked = BN_CLICKED;
constexpr int kListSelected = CBN_SELCHANGE;
constexpr int kTextChanged = EN_CHANGE;
constexpr int kFocusLost = EN_KILLFOCUS;

constexpr COLORREF kNumberColor = 0x0000FF;  // red
constexpr COLORREF kNumberGround = 0xFFFFFF;

INT_PTR ColorOfNumbers(HDC context) noexcept {
    SetTextColor(context, kNumberColor);
    SetBkColor(context, kNumberGround);
    return reinterpret_cast<INT_PTR>(GetStockObject(WHITE_BRUSH));
}

POINT PointOf(LPARAM lParam) noexcept {
    return {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
}

}  // namespace

INT_PTR CALLBACK pfPreviewWin32::InterfaceProcedure(HWND window, UINT message, WPARAM wParam,
                                                    LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        interfaceInstance = reinterpret_cast<pfPreviewWin32*>(lParam);
        interfaceInstance->m_hInterface = window;
    }
    if (interfaceInstance == nullptr || window != interfaceInstance->m_hInterface) {
        return FALSE;
    }
    try {
        return interfaceInstance->HandleInterface(window, message, wParam, lParam);
    } catch (const std::bad_alloc&) {
        // The input is lost, the dialog stays.
        return TRUE;
    }
}

INT_PTR pfPreviewWin32::HandleInterface(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            RestoreInterface(window);
            return TRUE;
        case WM_DESTROY:
            StoreInterface(window);
            return TRUE;
        case WM_PAINT:
            PaintSwatchesAndDials(window);
            return TRUE;
        case WM_COMMAND:
            HandleCommand(LOWORD(wParam), HIWORD(wParam));
            return TRUE;
        case WM_HSCROLL:
        case WM_VSCROLL:
            HandleScroll(LOWORD(wParam), reinterpret_cast<HWND>(lParam));
            return TRUE;
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORLISTBOX:
            return ColorOfNumbers(reinterpret_cast<HDC>(wParam));
        case WM_LBUTTONDOWN:
            ClickSwatch(PointOf(lParam));
            ClickDial(PointOf(lParam));
            return TRUE;
        case WM_LBUTTONUP:
            EndDialDrag();
            if (m_pPickColor != nullptr) {
                EndPick();
            }
            return TRUE;
        case WM_RBUTTONUP:
            StartPick(PointOf(lParam));
            return TRUE;
        case WM_MOUSEMOVE:
            if (m_pDragAngle != nullptr) {
                DragDial(PointOf(lParam));
            }
            return TRUE;
        default:
            return FALSE;
    }
}

void pfPreviewWin32::HandleCommand(int id, int notification) {
    if (HandleButton(id, notification)) {
        return;
    }
    if (notification == kTextChanged) {
        // A text counts only where the user is typing: a refresh writes texts as well.
        const bool typed =
            GetFocus() == GetDlgItem(m_hInterface, id) && !pfParameterUIWin32::IsWritingText();
        if (typed) {
            ControlChanged(id, true);
        }
    } else if (notification == kClicked || notification == kListSelected) {
        ControlChanged(id, true);
    } else if (notification == kFocusLost) {
        if (pfParameterUIWin32* control = FindControl(id)) {
            control->FocusLost(id);
        }
    }
}

// The controls that belong to the dialog itself. False for those of the parameters.
bool pfPreviewWin32::HandleButton(int id, int notification) {
    switch (id) {
        case IDOK:
            if (notification == kClicked) {
                WriteLog(kTrace, "UIProcedure - WM_COMMAND OK pressed.");
                m_bQuitLeftOver = m_bQuitTaken;
                PostQuitMessage(1);
            }
            return true;
        case IDCANCEL:
            if (notification == kClicked) {
                WriteLog(kTrace, "UIProcedure - WM_COMMAND CANCEL pressed.");
                m_bQuitLeftOver = m_bQuitTaken;
                PostQuitMessage(0);
            }
            return true;
        case IDC_PRESET_LIST:
            if (notification == kListSelected) {
                LoadSelectedPreset();
                m_pFilter->GetParameters().UpdateAllUI();
                ParametersChanged();
            }
            return true;
        case IDC_SAVE_PRESET:
            SaveCurrentPreset();
            return true;
        case IDC_DELETE_PRESET:
            DeleteCurrentPreset();
            return true;
        case IDC_OPEN_PRESETS:
            OnChangeSettingFile();
            return true;
        case IDC_UNDO:
            if (m_pFilter->GetUndoBuffer().Undo()) {
                ParametersChanged();
            }
            UpdateUndoButtons();
            return true;
        case IDC_REDO:
            if (m_pFilter->GetUndoBuffer().Redo()) {
                ParametersChanged();
            }
            UpdateUndoButtons();
            return true;
        case IDC_ZOOM_IN:
        case IDC_ZOOM_OUT:
            if (notification == kClicked) {
                m_nRequestedScale =
                    id == IDC_ZOOM_IN ? StepFinerThan(m_nScale) : StepCoarserThan(m_nScale);
                AskForFrame();
            }
            return true;
        case IDC_RESET:
            m_pFilter->Reset(true);
            UpdateUndoButtons();
            ParametersChanged();
            return true;
        case IDC_FIXED_PREVIEW:
            interruptible = !interruptible;
            CheckDlgButton(m_hInterface, IDC_FIXED_PREVIEW,
                           interruptible ? BST_UNCHECKED : BST_CHECKED);
            return true;
        case IDC_HIDE_HANDLE:
            showHandle = !showHandle;
            CheckDlgButton(m_hInterface, IDC_HIDE_HANDLE, showHandle ? BST_UNCHECKED : BST_CHECKED);
            InvalidateFrame();
            return true;
        default:
            return false;
    }
}

// A whole slider drag is one undo step.
void pfPreviewWin32::HandleScroll(int code, HWND slider) {
    bool dragActive = scrollDragActive;
    const bool makeUndo = ScrollMakesUndo(code, dragActive);
    scrollDragActive = dragActive;
    const bool changed = ControlChanged(GetDlgCtrlID(slider), makeUndo);
    ScrollHandled(changed, dragActive);
    scrollDragActive = dragActive;
}

}  // namespace mv
