// The preview window's messages: the mouse in the picture, and the window's size.
#include <windowsx.h>

#include <algorithm>
#include <new>

#include "interface/ControlValues.h"
#include "interface/PreviewPixels.h"
#include "interface/pfParameterUIPositionWin32.h"
#include "interface/pfPreviewWin32.h"
#include "parameters/pfParameterPosition.h"
#include "parameters/pfParameterRGB.h"
#include "resources/ResourceIds.h"

namespace mv {

namespace {

// The window that is open, for the procedure: one dialog at a time.
pfPreviewWin32* previewInstance = nullptr;

// Any handle of a picture is nearer than this: a click anywhere takes it.
constexpr double kNearEnough = 9.99999998e17;

POINT PointOf(LPARAM lParam) noexcept {
    return {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
}

PixelPoint ToPixel(POINT point) noexcept {
    return {point.x, point.y};
}

PixelSize ImageSize(const hostapi::FilterRecord& record) noexcept {
    // Hosts that leave the whole size out still tell the image's.
    return {record.wholeSize.h > 0 ? record.wholeSize.h : record.imageSize.h,
            record.wholeSize.v > 0 ? record.wholeSize.v : record.imageSize.v};
}

}  // namespace

INT_PTR CALLBACK pfPreviewWin32::PreviewProcedure(HWND window, UINT message, WPARAM wParam,
                                                  LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        previewInstance = reinterpret_cast<pfPreviewWin32*>(lParam);
        previewInstance->m_hPreview = window;
    }
    if (previewInstance == nullptr || window != previewInstance->m_hPreview) {
        return FALSE;
    }
    try {
        return previewInstance->HandlePreview(window, message, wParam, lParam);
    } catch (const std::bad_alloc&) {
        // The input is lost, the dialog stays.
        return TRUE;
    }
}

INT_PTR pfPreviewWin32::HandlePreview(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            pfParameterUIPositionWin32::SetImageSize(ImageSize(*m_pFilterRecord));
            RestorePreview(window);
            return TRUE;
        case WM_DESTROY:
            StorePreview(window);
            return TRUE;
        case WM_SIZE:
            // A minimised window has no size of its own.
            if (wParam != SIZE_MINIMIZED) {
                PreviewResized(window);
            }
            return TRUE;
        case WM_PAINT:
            PaintPreview(window);
            return TRUE;
        case WM_LBUTTONDOWN:
            StartDrag(PointOf(lParam));
            return TRUE;
        case WM_LBUTTONUP:
            EndDrag();
            return TRUE;
        case WM_RBUTTONDOWN:
            StartPan(PointOf(lParam));
            return TRUE;
        case WM_RBUTTONUP:
            EndPan();
            return TRUE;
        case WM_MOUSEMOVE:
            PreviewMouseMoved(PointOf(lParam));
            return TRUE;
        default:
            return FALSE;
    }
}

void pfPreviewWin32::PreviewResized(HWND window) noexcept {
    RECT rect = {};
    GetWindowRect(window, &rect);
    const int width = rect.right - rect.left;
    const int height = rect.bottom - rect.top;
    if (width < kSmallestWindow || height < kSmallestWindow) {
        MoveWindow(window, rect.left, rect.top, std::max<int>(width, kSmallestWindow),
                   std::max<int>(height, kSmallestWindow), TRUE);
        GetWindowRect(window, &rect);
    }
    const int frameWidth = rect.right - rect.left - 2 * GetSystemMetrics(SM_CXFRAME);
    const int frameHeight =
        rect.bottom - rect.top - 2 * GetSystemMetrics(SM_CYFRAME) - GetSystemMetrics(SM_CYCAPTION);
    SetWindowPos(GetDlgItem(window, IDC_PREVIEW_FRAME), nullptr, 0, 0, std::max(frameWidth, 0),
                 std::max(frameHeight, 0), SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    InvalidateFrame();
}

NormalisedPoint pfPreviewWin32::PositionAt(POINT point) const noexcept {
    return ClientToPosition(ToPixel(point), Frame(), InputSize(*m_pFilterRecord), m_fDisplayScale,
                            m_nOffset);
}

void pfPreviewWin32::StartDrag(POINT point) {
    if (!Frame().Contains(ToPixel(point))) {
        return;
    }
    m_ptDragStart = ToPixel(point);
    m_bDragging = true;
    SetCapture(m_hPreview);
    const NormalisedPoint position = PositionAt(point);
    if (m_pPickColor != nullptr) {
        return;
    }
    for (pfParameterUI* element : *m_pControls) {
        const auto* control = dynamic_cast<pfParameterUIPositionWin32*>(element);
        pfParameterPosition* parameter = control == nullptr ? nullptr : control->Parameter();
        if (parameter == nullptr) {
            continue;
        }
        const double x = parameter->GetX() - position.x;
        const double y = parameter->GetY() - position.y;
        if (x * x + y * y < kNearEnough) {
            m_pDragPosition = parameter;
        }
    }
    if (m_pDragPosition == nullptr) {
        return;
    }
    PushUndoStep(m_pDragPosition);
    m_pDragPosition->Set(position.x, position.y);
    m_pDragPosition->UpdateUI();
    ParametersChanged();
}

void pfPreviewWin32::EndDrag() noexcept {
    m_pDragPosition = nullptr;
    m_bDragging = false;
    if (GetCapture() == m_hPreview) {
        ReleaseCapture();
    }
    if (m_pPickColor != nullptr) {
        EndPick();
        ParametersChanged();
    }
}

void pfPreviewWin32::StartPan(POINT point) noexcept {
    if (!Frame().Contains(ToPixel(point))) {
        return;
    }
    m_ptPanStart = ToPixel(point);
    m_bPanning = true;
    m_nPanStartOffset = m_nOffset;
    SetCapture(m_hPreview);
}

void pfPreviewWin32::EndPan() noexcept {
    m_bPanning = false;
    if (GetCapture() == m_hPreview) {
        ReleaseCapture();
    }
    InvalidateFrame();
}

void pfPreviewWin32::PreviewMouseMoved(POINT point) {
    const NormalisedPoint position = PositionAt(point);
    ShowCursorPosition(position);
    if (m_bPanning) {
        m_nOffset = PannedOffset(m_nPanStartOffset, m_ptPanStart, ToPixel(point), m_fDisplayScale);
        InvalidateFrame();
    }
    if (m_bDragging && m_pDragPosition != nullptr) {
        // The click has made the undo step.
        m_pDragPosition->Set(position.x, position.y);
        m_pDragPosition->UpdateUI();
        ParametersChanged();
    }
    if (m_pPickColor != nullptr) {
        PickColorAt(point);
    }
}

void pfPreviewWin32::ShowCursorPosition(NormalisedPoint position) noexcept {
    const PixelSize picture = OutputSize(*m_pFilterRecord);
    char title[kTitleCapacity];
    TitleText(TitleCoordinate(picture.width, m_nScale, m_nDetailLevel, position.x),
              TitleCoordinate(picture.height, m_nScale, m_nDetailLevel, position.y), title);
    SetWindowTextA(m_hPreview, title);
}

void pfPreviewWin32::PickColorAt(POINT point) {
    InvalidateRect(m_hPreview, nullptr, FALSE);
    InvalidateFrame();
    PAINTSTRUCT paint;
    const HDC context = BeginPaint(m_hPreview, &paint);
    const COLORREF color = GetPixel(context, point.x, point.y);
    EndPaint(m_hPreview, &paint);
    if (color == CLR_INVALID) {
        return;
    }
    if (m_pPickColor->Set(ChannelFromByte(GetRValue(color)), ChannelFromByte(GetGValue(color)),
                          ChannelFromByte(GetBValue(color)))) {
        m_pPickColor->UpdateUI();
        ParametersChanged();
    }
}

}  // namespace mv
