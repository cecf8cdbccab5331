#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/DialogRun.h"

namespace mv::windowstest {

// A picture taken of a window: red, green, blue, from the top down.
struct Shot {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    COLORREF At(int x, int y) const;
};

// What a person does with the dialog, from the test's thread: by control id, by keys that go
// through the dialog's own message loop, and by the mouse in the preview.
class DialogUser {
public:
    explicit DialogUser(DialogRun& run) : run_(run) {}

    HWND Control(int id) const { return GetDlgItem(run_.Interface(), id); }
    // Until the dialog has served what was sent to it and has rendered.
    void Settle() const;

    void Focus(int id) const;
    HWND FocusedWindow() const;
    void Type(int id, const std::string& text) const;
    void TypeKey(int id, unsigned key) const;
    std::string Text(int id) const;
    double Number(int id) const;
    void Click(int id) const;
    void PostClick(int id) const;
    bool Checked(int id) const;
    bool Enabled(int id) const;
    int Selected(int id) const;
    void Select(int id, int index) const;
    int SliderPosition(int id) const;
    // One scroll message of a drag with the focus on the slider, and its end.
    void SlideTo(int id, int position) const;
    void EndSlide(int id) const;

    RECT FrameRect() const;
    POINT FrameMiddle() const;
    void PreviewMouse(UINT message, POINT point, WPARAM keys = 0) const;
    std::string PreviewTitle() const;
    Shot ShootPreview() const;

    bool PressOk() const;
    bool PressCancel() const;

private:
    DialogRun& run_;
};

// Waits until the condition holds; false when it does not in time.
template <class Condition>
bool Eventually(Condition condition, unsigned milliseconds = 30000) {
    const DWORD begin = GetTickCount();
    while (!condition()) {
        if (GetTickCount() - begin > milliseconds) {
            return false;
        }
        Sleep(5);
    }
    return true;
}

// A visible top-level window of a thread with this title, or null.
HWND FindThreadWindow(DWORD threadId, const char* title);
HWND AwaitThreadWindow(DWORD threadId, const char* title);

}  // namespace mv::windowstest
