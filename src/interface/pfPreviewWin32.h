#pragma once

#include <windows.h>

#include <string>

#include "interface/PreviewGeometry.h"
#include "interface/PreviewScale.h"
#include "interface/pfPreview.h"

namespace mv {

class pfParameter;
class pfParameterPosition;
class pfParameterRGB;
class pfParameterUIAngleWin32;
class pfParameterUIRGBWin32;
class pfParameterUIWin32;

// The dialog in two windows: the resizable preview, and owned by it the interface with all
// controls. Show runs a message loop of its own that serves all pending input first and then
// renders once. Owned by the filter; everything here runs on the thread that called Show, also
// the handlers that a render's progress call lets in.
class pfPreviewWin32 final : public pfPreview {
public:
    pfPreviewWin32() = default;
    pfPreviewWin32(const pfPreviewWin32&) = delete;
    pfPreviewWin32& operator=(const pfPreviewWin32&) = delete;

    bool Show(pfFilter* filter, hostapi::FilterRecord* filterRecord,
              std::list<pfParameterUI*>* controls) override;
    void ParametersChanged() override;
    bool AlternativeColorSelection(hostapi::FilterRecord* filterRecord, double& red, double& green,
                                   double& blue) override;
    // The whole image into view, at the finest step at which it fits.
    virtual void FitToWindow();

    // Stores a path, shows what is in the file, and loads the first preset of it.
    void SetPresetPath(const std::string& path);

private:
    static constexpr int kPresetNameCapacity = 256;

    // The two windows and the loop.
    void Begin(pfFilter* filter, hostapi::FilterRecord* filterRecord,
               std::list<pfParameterUI*>* controls) noexcept;
    bool OpenPreviewWindow() noexcept;
    bool OpenInterfaceWindow() noexcept;
    bool RunDialog();
    void ClosePreviewWindow() noexcept;
    void CloseInterfaceWindow() noexcept;
    int RunMessageLoop();
    BOOL ServeQueue(MSG& message);
    void AskForFrame() noexcept;
    void UpdateUndoButtons() noexcept;
    pfParameterUIWin32* FindControl(int id) const noexcept;
    template <class Control>
    Control* FindControlAt(POINT point) const noexcept;
    void PushUndoStep(pfParameter* parameter);
    bool ControlChanged(int id, bool makeUndo);

    // Scale and rendering.
    void AssignScaleFactor(std::int32_t step);
    bool DeliverPicture(std::int32_t factor, PixelPoint centre, PixelSize frame);
    std::int32_t RenderUntilCurrent();
    std::int32_t RenderFrame();
    void DrawToPreview();
    void FreeBuffer() noexcept;
    PreviewFrame Frame() const noexcept;
    void InvalidateFrame() const noexcept;

    // The preview window.
    static INT_PTR CALLBACK PreviewProcedure(HWND window, UINT message, WPARAM wParam,
                                             LPARAM lParam);
    INT_PTR HandlePreview(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void PreviewResized(HWND window) noexcept;
    void StartDrag(POINT point);
    void EndDrag() noexcept;
    void StartPan(POINT point) noexcept;
    void EndPan() noexcept;
    void PreviewMouseMoved(POINT point);
    void ShowCursorPosition(NormalisedPoint position) noexcept;
    void PickColorAt(POINT point);
    NormalisedPoint PositionAt(POINT point) const noexcept;

    // Painting.
    void PaintPreview(HWND window);
    void PaintPicture(HDC context, const PreviewLayout& layout);
    bool PaintThroughHost(HDC context, const PreviewLayout& layout, const BITMAPINFO& format);
    void StretchBuffer(HDC context, const PreviewLayout& layout, const BITMAPINFO& format,
                       const void* bits) noexcept;
    void PaintHandles(HDC context, const PreviewLayout& layout) noexcept;

    // The interface window.
    static INT_PTR CALLBACK InterfaceProcedure(HWND window, UINT message, WPARAM wParam,
                                               LPARAM lParam);
    INT_PTR HandleInterface(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void HandleCommand(int id, int notification);
    bool HandleButton(int id, int notification);
    void HandleScroll(int code, HWND slider);

    // Swatches, dials and picking.
    void PaintSwatchesAndDials(HWND window);
    void PaintSwatch(HDC context, const pfParameterUIRGBWin32& control);
    void PaintDial(HDC context, const pfParameterUIAngleWin32& control) noexcept;
    void ClickSwatch(POINT point);
    void ClickDial(POINT point);
    void DragDial(POINT point);
    void EndDialDrag() noexcept;
    void StartPick(POINT point);
    void EndPick() noexcept;

    // Presets.
    static INT_PTR CALLBACK SaveProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    bool AcceptPresetName(HWND window);
    void UpdateSettingsList();
    void FillSettingsList(const std::list<std::string>& names);
    void SaveCurrentPreset();
    void DeleteCurrentPreset();
    void LoadSelectedPreset();
    void OnChangeSettingFile();
    bool SelectedPresetName(std::string& name) const;

    // What is remembered between runs.
    void RestoreInterface(HWND window);
    void StoreInterface(HWND window) noexcept;
    void RestorePreview(HWND window) noexcept;
    void StorePreview(HWND window) noexcept;
    void WriteLastUsedSettings() noexcept;
    void ReadLastUsedSettings();

    std::int32_t m_nScale = 1;
    std::int32_t m_nRequestedScale = 1;
    HWND m_hInterface = nullptr;
    HWND m_hPreview = nullptr;
    hostapi::FilterRecord* m_pFilterRecord = nullptr;
    pfFilter* m_pFilter = nullptr;
    std::list<pfParameterUI*>* m_pControls = nullptr;
    pfParameterPosition* m_pDragPosition = nullptr;
    pfParameterRGB* m_pPickColor = nullptr;
    pfParameterUIAngleWin32* m_pDragAngle = nullptr;
    std::int32_t m_nBufferWidth = 0;
    std::int32_t m_nBufferHeight = 0;
    PixelPoint m_nPanStartOffset;
    PixelPoint m_nOffset;
    PixelPoint m_ptDragStart;
    PixelPoint m_ptPanStart;
    bool m_bDragging = false;
    bool m_bPanning = false;
    bool m_bImageReady = false;
    double m_fDisplayScale = 1.0;
    std::int32_t m_nDetailLevel = 0;
    char m_szPresetName[kPresetNameCapacity] = {};
    std::uint8_t* m_pBuffer = nullptr;
    HCURSOR m_hPickCursor = nullptr;
    HCURSOR m_hSavedCursor = nullptr;
    std::string m_strPresetPath;

    // A parameter has changed since the last frame began. The zoom alone does not set it.
    bool m_bChangePending = false;
    // This dialog has asked the host for a picture, and the host has delivered the last one.
    bool m_bPictureRequested = false;
    bool m_bPictureDelivered = false;
    // The loop has taken its quit message; one that OK or Cancel posts after it is left over.
    bool m_bQuitTaken = false;
    bool m_bQuitLeftOver = false;
    // The host's window, if it is this thread's and was enabled; nobody may click in it meanwhile.
    HWND m_hDisabledOwner = nullptr;
    ULONG_PTR m_hPreviewClassIcon = 0;
    ULONG_PTR m_hInterfaceClassIcon = 0;
};

}  // namespace mv
