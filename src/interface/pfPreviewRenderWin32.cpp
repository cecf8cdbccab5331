// Zoom steps, the host's reduced pictures, and the rendering of preview frames.
#include <cstring>

#include "diagnostics/Log.h"
#include "frame/pfFilter.h"
#include "interface/PreviewPixels.h"
#include "interface/PreviewState.h"
#include "interface/pfPreviewWin32.h"
#include "platform/Clock.h"
#include "resources/ResourceIds.h"

namespace mv {

namespace {

// The factor for which the record was last set up. It outlives the dialog, and means nothing for
// a dialog that has not asked for its first picture yet.
std::int32_t lastRenderFactor = -1;

// Said when there is no picture to render.
constexpr std::int32_t kNoPicture = -1;

}  // namespace

PreviewFrame pfPreviewWin32::Frame() const noexcept {
    PreviewFrame frame;
    RECT rect = {};
    const HWND place = GetDlgItem(m_hPreview, IDC_PREVIEW_FRAME);
    if (place != nullptr && GetWindowRect(place, &rect)) {
        MapWindowPoints(nullptr, m_hPreview, reinterpret_cast<POINT*>(&rect), 2);
        frame = {rect.left, rect.top, {rect.right - rect.left, rect.bottom - rect.top}};
    }
    return frame;
}

void pfPreviewWin32::InvalidateFrame() const noexcept {
    const PreviewFrame frame = Frame();
    const RECT rect = {frame.left, frame.top, frame.left + frame.size.width,
                       frame.top + frame.size.height};
    InvalidateRect(m_hPreview, &rect, FALSE);
}

void pfPreviewWin32::FitToWindow() {
    const PixelSize image = {m_pFilterRecord->imageSize.h, m_pFilterRecord->imageSize.v};
    m_nRequestedScale = StepThatFits(image, Frame().size);
    if (m_nRequestedScale != m_nScale) {
        previewDirty = true;
    }
    AssignScaleFactor(m_nRequestedScale);
}

void pfPreviewWin32::AssignScaleFactor(std::int32_t step) {
    WriteLog(kTrace, "pfPreviewWin32::AssignScaleFactor( nFactor(", step, ") )");
    LogScope scope;
    m_nScale = step;
    const double oldScale = m_fDisplayScale;
    const PreviewScale scale = ScaleOfStep(step, m_nDetailLevel);
    m_fDisplayScale = scale.displayScale;
    if (m_hInterface != nullptr) {
        char percentage[kPercentageCapacity];
        PercentageOfStep(step, percentage);
        SetDlgItemTextA(m_hInterface, IDC_ZOOM_TEXT, percentage);
    }
    const PixelSize frame = Frame().size;
    const PixelPoint centre =
        CentreOfView(frame, OutputSize(*m_pFilterRecord), oldScale, m_nOffset);
    // At the first step of a dialog the record is the host's own, whatever an earlier dialog
    // asked for.
    if (m_bPictureRequested && scale.renderFactor == lastRenderFactor) {
        // No new data are needed, unless a parameter has changed in the same breath.
        previewDirty = m_bChangePending;
        m_nOffset = OffsetForCentre(centre, frame, m_fDisplayScale);
        InvalidateFrame();
        UpdateWindow(m_hPreview);
        return;
    }
    if (DeliverPicture(scale.renderFactor, centre, frame)) {
        m_bImageReady = false;
        ParametersChanged();
        WriteLog(kTrace, "pfPreviewWin32::AssignScaleFactor( return(", 0, ") )");
    }
}

// Asks the host for the picture at another factor and makes the buffer for it.
bool pfPreviewWin32::DeliverPicture(std::int32_t factor, PixelPoint centre, PixelSize frame) {
    const PixelSize oldPicture = OutputSize(*m_pFilterRecord);
    lastRenderFactor = factor;
    m_bPictureRequested = true;
    FreeBuffer();
    m_bPictureDelivered = pfFilter::SetupFilterRecord(m_pFilterRecord, factor) == hostapi::noErr;
    if (!m_bPictureDelivered) {
        return false;
    }
    m_nOffset =
        OffsetForCentre(centre, oldPicture, OutputSize(*m_pFilterRecord), frame, m_fDisplayScale);
    const PixelSize input = InputSize(*m_pFilterRecord);
    m_nBufferWidth = BufferWidthFor(input.width);
    m_nBufferHeight = input.height;
    const std::uint32_t bytes = BufferBytesFor(m_nBufferWidth, m_nBufferHeight);
    if (input.height > 0) {
        m_pBuffer =
            bytes == 0 ? nullptr : static_cast<std::uint8_t*>(m_pFilter->AllocateMemory(bytes));
        if (m_pBuffer == nullptr) {
            WriteLog(kError, kErrorPrefix, "Out of memory");
            return false;
        }
        std::memset(m_pBuffer, 0, bytes);
    }
    return true;
}

void pfPreviewWin32::FreeBuffer() noexcept {
    if (m_pBuffer != nullptr) {
        m_pFilter->FreeMemory(m_pBuffer);
        m_pBuffer = nullptr;
    }
}

// Renders frames until the picture is current. A frame that was interrupted makes the next one
// coarser by one level; after a coarse one a full one follows. Gives the last frame's status.
std::int32_t pfPreviewWin32::RenderUntilCurrent() {
    const std::int32_t ok = m_pFilter->StatusOk();
    if (m_nRequestedScale != m_nScale) {
        AssignScaleFactor(m_nRequestedScale);
    }
    while (m_nDetailLevel > 0 || previewDirty) {
        const std::int32_t status = RenderFrame();
        if (status == hostapi::userCanceledErr) {
            ++m_nDetailLevel;
        } else if (status != ok) {
            return status;
        } else {
            DrawToPreview();
            InvalidateFrame();
            UpdateWindow(m_hPreview);
            if (previewDirty || m_nDetailLevel <= 0) {
                continue;
            }
            previewDirty = true;
            m_nDetailLevel = 0;
        }
        AssignScaleFactor(m_nRequestedScale);
    }
    return ok;
}

std::int32_t pfPreviewWin32::RenderFrame() {
    // 0 would say that no dialog is open.
    const std::uint32_t now = TickCount();
    previewClock = now == 0 ? 1 : now;
    previewDirty = false;
    m_bChangePending = false;
    if (!m_bPictureDelivered) {
        return kNoPicture;
    }
    m_pFilter->SetPreviewScale(m_nDetailLevel);
    return m_pFilter->SelectRenderTemplate(m_pFilterRecord);
}

void pfPreviewWin32::DrawToPreview() {
    WriteLog(kTrace, "pfPreviewWin32::DrawToPreview()");
    PreviewFormat format;
    const FormatResult result = ChoosePreviewFormat(*m_pFilterRecord, format);
    if (result == FormatResult::InvalidMode) {
        WriteLog(kError, kErrorPrefix, "Invalid imageMode");
    }
    if (result != FormatResult::Usable || m_pFilterRecord->outData == nullptr ||
        m_pBuffer == nullptr) {
        return;
    }
    const bool hostDisplays = m_pFilterRecord->displayPixels != nullptr;
    ConvertPreview(*m_pFilterRecord, format, hostDisplays,
                   {m_pBuffer, m_nBufferWidth, m_nBufferHeight});
    m_bImageReady = true;
    InvalidateFrame();
}

}  // namespace mv
