// Colour swatches and angle dials of the interface, and picking a colour from the preview.
// Ahead of what builds on it.
#include <windows.h>

#include <commdlg.h>

#include <algorithm>
#include <cmath>

#include "diagnostics/Log.h"
#include "frame/pfFilter.h"
#include "interface/ControlValues.h"
#include "interface/SafeNumber.h"
#include "interface/pfParameterUIAngleWin32.h"
#include "interface/pfParameterUIRGBWin32.h"
#include "interface/pfPreviewWin32.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterRGB.h"

namespace mv {

namespace {

constexpr double kLuminanceRed = 0.292687786;
constexpr double kLuminanceGreen = 0.552149646;
constexpr double kLuminanceBlue = 0.155162568;
constexpr int kHubRadius = 5;
constexpr int kPointerSpread = 2;
constexpr double kRadiansPerDegree = 0.017453292519943295;

// The colours that the user keeps in the common colour dialog.
COLORREF customColors[16] = {};

COLORREF ToColor(double red, double green, double blue) noexcept {
    return RGB(ByteFromChannel(red), ByteFromChannel(green), ByteFromChannel(blue));
}

bool ItemRect(HWND item, RECT& rect) noexcept {
    if (item == nullptr || !GetWindowRect(item, &rect)) {
        return false;
    }
    MapWindowPoints(nullptr, GetParent(item), reinterpret_cast<POINT*>(&rect), 2);
    return true;
}

POINT CentreOf(const RECT& rect) noexcept {
    return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

void Disc(HDC context, const RECT& rect, int color) noexcept {
    const HGDIOBJ brush = SelectObject(context, GetStockObject(color));
    Ellipse(context, rect.left, rect.top, rect.right, rect.bottom);
    SelectObject(context, brush);
}

HWND WindowOf(const pfParameterUIRGBWin32& control) noexcept {
    return control.Swatch();
}

HWND WindowOf(const pfParameterUIAngleWin32& control) noexcept {
    return control.Dial();
}

bool SetFromPoint(pfParameterUIAngleWin32& control, POINT point) {
    RECT rect;
    if (!ItemRect(control.Dial(), rect)) {
        return false;
    }
    const POINT centre = CentreOf(rect);
    const bool changed = control.SetFromPointer(point.x - centre.x, centre.y - point.y);
    control.Refresh();
    return changed;
}

}  // namespace

template <class Control>
Control* pfPreviewWin32::FindControlAt(POINT point) const noexcept {
    for (pfParameterUI* element : *m_pControls) {
        auto* control = dynamic_cast<Control*>(element);
        RECT rect;
        if (control != nullptr && control->Parameter() != nullptr &&
            ItemRect(WindowOf(*control), rect) && PtInRect(&rect, point)) {
            return control;
        }
    }
    return nullptr;
}

void pfPreviewWin32::PaintSwatchesAndDials(HWND window) {
    PAINTSTRUCT paint;
    const HDC context = BeginPaint(window, &paint);
    if (context == nullptr) {
        return;
    }
    for (pfParameterUI* element : *m_pControls) {
        if (const auto* swatch = dynamic_cast<pfParameterUIRGBWin32*>(element)) {
            PaintSwatch(context, *swatch);
        } else if (const auto* dial = dynamic_cast<pfParameterUIAngleWin32*>(element)) {
            PaintDial(context, *dial);
        }
    }
    EndPaint(window, &paint);
}

void pfPreviewWin32::PaintSwatch(HDC context, const pfParameterUIRGBWin32& control) {
    RECT rect;
    pfParameterRGB* parameter = control.Parameter();
    if (parameter == nullptr || !ItemRect(control.Swatch(), rect)) {
        return;
    }
    if (m_pFilterRecord->imageMode == hostapi::plugInModeGrayScale ||
        m_pFilterRecord->imageMode == hostapi::plugInModeGray16) {
        const double gray = parameter->GetRed() * kLuminanceRed +
                            parameter->GetGreen() * kLuminanceGreen +
                            parameter->GetBlue() * kLuminanceBlue;
        parameter->Set(gray, gray, gray);
    }
    FrameRect(context, &rect, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
    InflateRect(&rect, -1, -1);
    if (const HBRUSH brush = CreateSolidBrush(
            ToColor(parameter->GetRed(), parameter->GetGreen(), parameter->GetBlue()))) {
        FillRect(context, &rect, brush);
        DeleteObject(brush);
    }
}

void pfPreviewWin32::PaintDial(HDC context, const pfParameterUIAngleWin32& control) noexcept {
    RECT rect;
    const pfParameterFloat* parameter = control.Parameter();
    if (parameter == nullptr || !ItemRect(control.Dial(), rect)) {
        return;
    }
    const POINT centre = CentreOf(rect);
    Disc(context, rect, WHITE_BRUSH);
    Disc(context,
         {centre.x - kHubRadius, centre.y - kHubRadius, centre.x + kHubRadius,
          centre.y + kHubRadius},
         BLACK_BRUSH);
    const double length = std::min(rect.right - rect.left, rect.bottom - rect.top) / 2;
    const double angle = parameter->Get() * kRadiansPerDegree;
    const int right = TruncateToInt(std::cos(angle) * length);
    const int down = -TruncateToInt(std::sin(angle) * length);
    // A pointer of some thickness, drawn from each pixel around the centre.
    for (int dy = -kPointerSpread; dy <= kPointerSpread; ++dy) {
        for (int dx = -kPointerSpread; dx <= kPointerSpread; ++dx) {
            MoveToEx(context, centre.x + dx, centre.y + dy, nullptr);
            LineTo(context, centre.x + right, centre.y + down);
        }
    }
}

void pfPreviewWin32::ClickSwatch(POINT point) {
    auto* control = FindControlAt<pfParameterUIRGBWin32>(point);
    if (control == nullptr) {
        return;
    }
    pfParameterRGB* parameter = control->Parameter();
    double red = parameter->GetRed();
    double green = parameter->GetGreen();
    double blue = parameter->GetBlue();
    EnableWindow(m_hInterface, FALSE);
    EnableWindow(m_hPreview, FALSE);
    if (m_pFilter->RequestColor(m_pFilterRecord, red, green, blue)) {
        PushUndoStep(parameter);
        const bool changed = parameter->Set(red, green, blue);
        control->Refresh();
        if (changed) {
            ParametersChanged();
        }
    }
    EnableWindow(m_hPreview, TRUE);
    EnableWindow(m_hInterface, TRUE);
}

void pfPreviewWin32::ClickDial(POINT point) {
    auto* control = FindControlAt<pfParameterUIAngleWin32>(point);
    if (control == nullptr) {
        return;
    }
    m_pDragAngle = control;
    SetFocus(nullptr);
    PushUndoStep(control->Parameter());
    const bool changed = SetFromPoint(*control, point);
    SetCapture(m_hInterface);
    if (changed) {
        ParametersChanged();
    }
}

void pfPreviewWin32::DragDial(POINT point) {
    if (SetFromPoint(*m_pDragAngle, point)) {
        ParametersChanged();
    }
}

void pfPreviewWin32::EndDialDrag() noexcept {
    m_pDragAngle = nullptr;
    if (GetCapture() == m_hInterface) {
        ReleaseCapture();
    }
}

void pfPreviewWin32::StartPick(POINT point) {
    auto* control = FindControlAt<pfParameterUIRGBWin32>(point);
    if (control == nullptr) {
        SetClassLongPtrA(m_hPreview, GCLP_HCURSOR, 0);
        SetCursor(m_hSavedCursor);
        return;
    }
    m_pPickColor = control->Parameter();
    PushUndoStep(m_pPickColor);
    SetClassLongPtrA(m_hPreview, GCLP_HCURSOR, reinterpret_cast<LONG_PTR>(m_hPickCursor));
    SetCursor(m_hPickCursor);
}

void pfPreviewWin32::EndPick() noexcept {
    m_pPickColor = nullptr;
    SetClassLongPtrA(m_hPreview, GCLP_HCURSOR, 0);
    SetCursor(m_hSavedCursor);
}

bool pfPreviewWin32::AlternativeColorSelection(hostapi::FilterRecord* filterRecord, double& red,
                                               double& green, double& blue) {
    WriteLog(kTrace, "pfPreviewWin32::AlternativeColorSelection( pFilterRecord(0x",
             LogPointer{filterRecord}, "), fRed(", red, "), fGreen(", green, "), fBlue(", blue,
             ") )");
    LogScope scope;
    CHOOSECOLORA choice = {};
    choice.lStructSize = sizeof choice;
    choice.hwndOwner = m_hInterface;
    choice.rgbResult = ToColor(red, green, blue);
    choice.lpCustColors = customColors;
    choice.Flags = CC_RGBINIT | CC_FULLOPEN | CC_ANYCOLOR;
    const bool chosen = ChooseColorA(&choice) != FALSE;
    if (chosen) {
        red = ChannelFromByte(GetRValue(choice.rgbResult));
        green = ChannelFromByte(GetGValue(choice.rgbResult));
        blue = ChannelFromByte(GetBValue(choice.rgbResult));
    }
    WriteLog(kTrace, "pfPreviewWin32::AlternativeColorSelection( return(", chosen, ") fRed(", red,
             "), fGreen(", green, "), fBlue(", blue, ") )");
    return chosen;
}

}  // namespace mv
