// Painting of the preview window: the picture out of the buffer, the strips around it, the handle.
#include "diagnostics/Log.h"
#include "interface/PreviewPixels.h"
#include "interface/PreviewState.h"
#include "interface/pfParameterUIPositionWin32.h"
#include "interface/pfPreviewWin32.h"
#include "parameters/pfParameterPosition.h"

namespace mv {

namespace {

constexpr int kStretchFailed = -1;

RECT ToRect(const PixelRect& rect) noexcept {
    return {rect.left, rect.top, rect.right, rect.bottom};
}

BITMAPINFO DescribeBuffer(std::int32_t width, std::int32_t height, PixelSize picture) noexcept {
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    info.bmiHeader.biCompression = BI_RGB;
    info.bmiHeader.biSizeImage =
        static_cast<DWORD>(picture.width) * static_cast<DWORD>(picture.height) * 3;
    return info;
}

hostapi::PSPixelMap DescribeForHost(std::uint8_t* buffer, std::int32_t width,
                                    std::int32_t height) noexcept {
    hostapi::PSPixelMap map = {};
    map.version = 1;
    map.bounds = {0, 0, height, width};
    map.imageMode = hostapi::plugInModeRGBColor;
    map.rowBytes = width * 3;
    map.colBytes = 3;
    map.planeBytes = 1;
    map.baseAddr = buffer;
    return map;
}

// What the host would have drawn, without its colour management.
void CopyForBitmap(const std::uint8_t* buffer, std::uint8_t* bits, std::int32_t width,
                   std::int32_t height) noexcept {
    const std::ptrdiff_t rowBytes = std::ptrdiff_t{width} * 3;
    for (std::int32_t y = 0; y < height; ++y) {
        const std::uint8_t* source = buffer + rowBytes * y;
        std::uint8_t* target = bits + rowBytes * (height - 1 - y);
        for (std::int32_t x = 0; x < width; ++x, source += 3, target += 3) {
            target[0] = source[2];
            target[1] = source[1];
            target[2] = source[0];
        }
    }
}

void DrawOutline(HDC context, PixelPoint centre, std::int32_t halfSize) noexcept {
    MoveToEx(context, centre.x - halfSize, centre.y - halfSize, nullptr);
    LineTo(context, centre.x + halfSize, centre.y - halfSize);
    LineTo(context, centre.x + halfSize, centre.y + halfSize);
    LineTo(context, centre.x - halfSize, centre.y + halfSize);
    LineTo(context, centre.x - halfSize, centre.y - halfSize);
}

void DrawDiagonals(HDC context, PixelPoint centre, std::int32_t halfSize) noexcept {
    MoveToEx(context, centre.x - halfSize, centre.y - halfSize, nullptr);
    LineTo(context, centre.x + halfSize, centre.y + halfSize);
    MoveToEx(context, centre.x - halfSize, centre.y + halfSize, nullptr);
    LineTo(context, centre.x + halfSize, centre.y - halfSize);
}

void DrawHandle(HDC context, PixelPoint centre) noexcept {
    for (int i = 0; i < kHandleSquares; ++i) {
        const HPEN pen = CreatePen(PS_SOLID, 0, kHandleColors[i]);
        if (pen == nullptr) {
            continue;
        }
        const HGDIOBJ before = SelectObject(context, pen);
        DrawOutline(context, centre, kHandleHalfSizes[i]);
        if (i == kHandleSquares - 1) {
            DrawDiagonals(context, centre, kHandleHalfSizes[i]);
        }
        SelectObject(context, before);
        DeleteObject(pen);
    }
}

}  // namespace

void pfPreviewWin32::PaintPreview(HWND window) {
    PAINTSTRUCT paint;
    const HDC context = BeginPaint(window, &paint);
    if (context == nullptr) {
        return;
    }
    const PreviewLayout layout =
        LayOutPreview(Frame(), OutputSize(*m_pFilterRecord), m_fDisplayScale, m_nOffset);
    m_nOffset = layout.offset;
    SetBrushOrgEx(context, layout.target.left - layout.offset.x,
                  layout.target.top - layout.offset.y, nullptr);
    PaintPicture(context, layout);
    if (const HBRUSH brush = CreateSolidBrush(kStripColor)) {
        for (const PixelRect& strip : layout.strips) {
            const RECT rect = ToRect(strip);
            FillRect(context, &rect, brush);
        }
        DeleteObject(brush);
    }
    if (showHandle) {
        PaintHandles(context, layout);
    }
    EndPaint(window, &paint);
}

void pfPreviewWin32::PaintPicture(HDC context, const PreviewLayout& layout) {
    if (!m_bImageReady || m_pBuffer == nullptr) {
        const RECT rect = ToRect(layout.target);
        FillRect(context, &rect, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
        return;
    }
    const BITMAPINFO format =
        DescribeBuffer(m_nBufferWidth, m_nBufferHeight, OutputSize(*m_pFilterRecord));
    if (m_pFilterRecord->displayPixels == nullptr) {
        StretchBuffer(context, layout, format, m_pBuffer);
    } else {
        PaintThroughHost(context, layout, format);
    }
}

// The host draws into a bitmap in memory, so that its colour management applies.
bool pfPreviewWin32::PaintThroughHost(HDC context, const PreviewLayout& layout,
                                      const BITMAPINFO& format) {
    const HDC memory = CreateCompatibleDC(context);
    void* bits = nullptr;
    const HBITMAP section =
        memory == nullptr ? nullptr
                          : CreateDIBSection(memory, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (section != nullptr) {
        const HGDIOBJ before = SelectObject(memory, section);
        const hostapi::PSPixelMap map = DescribeForHost(m_pBuffer, m_nBufferWidth, m_nBufferHeight);
        const hostapi::OSErr result =
            m_pFilterRecord->displayPixels(&map, &map.bounds, 0, 0, memory);
        GdiFlush();
        if (result != hostapi::noErr) {
            CopyForBitmap(m_pBuffer, static_cast<std::uint8_t*>(bits), m_nBufferWidth,
                          m_nBufferHeight);
        }
        StretchBuffer(context, layout, format, bits);
        SelectObject(memory, before);
        DeleteObject(section);
    }
    if (memory != nullptr) {
        DeleteDC(memory);
    }
    return section != nullptr;
}

void pfPreviewWin32::StretchBuffer(HDC context, const PreviewLayout& layout,
                                   const BITMAPINFO& format, const void* bits) noexcept {
    SetStretchBltMode(context, COLORONCOLOR);
    const int result = StretchDIBits(
        context, layout.target.left, layout.target.top, layout.target.Width(),
        layout.target.Height(), layout.sourceOrigin.x, layout.sourceOrigin.y,
        layout.sourceSize.width, layout.sourceSize.height, bits, &format, DIB_RGB_COLORS, SRCCOPY);
    if (result == kStretchFailed) {
        WriteLog(kWarning, kWarningPrefix, "StretchDIBBits failed. GetLastError(", GetLastError(),
                 ")");
    }
}

void pfPreviewWin32::PaintHandles(HDC context, const PreviewLayout& layout) noexcept {
    for (pfParameterUI* element : *m_pControls) {
        const auto* control = dynamic_cast<pfParameterUIPositionWin32*>(element);
        const pfParameterPosition* position = control == nullptr ? nullptr : control->Parameter();
        if (position != nullptr) {
            DrawHandle(context,
                       HandleCentre(layout, m_fDisplayScale, position->GetX(), position->GetY()));
        }
    }
}

}  // namespace mv
