#include "support/DialogUser.h"

#include <commctrl.h>

#include <cstdlib>

namespace mv::windowstest {

namespace {

constexpr unsigned kReplyTimeout = 60000;

LRESULT Send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    DWORD_PTR result = 0;
    SendMessageTimeoutA(window, message, wParam, lParam, SMTO_NORMAL, kReplyTimeout, &result);
    return static_cast<LRESULT>(result);
}

struct TitleSearch {
    const char* title;
    HWND found;
};

BOOL CALLBACK LookForTitle(HWND window, LPARAM parameter) {
    auto* search = reinterpret_cast<TitleSearch*>(parameter);
    char title[256] = {};
    GetWindowTextA(window, title, sizeof title);
    if (std::string(title) == search->title && IsWindowVisible(window)) {
        search->found = window;
        return FALSE;
    }
    return TRUE;
}

}  // namespace

COLORREF Shot::At(int x, int y) const {
    const auto at = static_cast<std::size_t>((y * width + x) * 3);
    return RGB(pixels[at], pixels[at + 1], pixels[at + 2]);
}

void DialogUser::Settle() const {
    // The first probe may be served just ahead of the frame that it came with, the second only
    // after it.
    for (int probe = 0; probe < 2 && run_.AwaitLoop(); ++probe) {
    }
}

void DialogUser::Focus(int id) const {
    Send(run_.Interface(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(id)), TRUE);
}

HWND DialogUser::FocusedWindow() const {
    GUITHREADINFO info = {};
    info.cbSize = sizeof info;
    return GetGUIThreadInfo(run_.ThreadId(), &info) ? info.hwndFocus : nullptr;
}

void DialogUser::Type(int id, const std::string& text) const {
    Focus(id);
    Send(Control(id), EM_SETSEL, 0, -1);
    for (const char c : text) {
        PostMessageA(Control(id), WM_CHAR, static_cast<unsigned char>(c), 1);
    }
    Settle();
}

void DialogUser::TypeKey(int id, unsigned key) const {
    PostMessageA(Control(id), WM_KEYDOWN, key, 1);
    PostMessageA(Control(id), WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
    Settle();
}

std::string DialogUser::Text(int id) const {
    char text[256] = {};
    Send(Control(id), WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
    return text;
}

double DialogUser::Number(int id) const {
    return std::atof(Text(id).c_str());
}

void DialogUser::Click(int id) const {
    Send(Control(id), BM_CLICK);
    Settle();
}

void DialogUser::PostClick(int id) const {
    PostMessageA(Control(id), BM_CLICK, 0, 0);
}

bool DialogUser::Checked(int id) const {
    return Send(Control(id), BM_GETCHECK) == BST_CHECKED;
}

bool DialogUser::Enabled(int id) const {
    return IsWindowEnabled(Control(id)) != FALSE;
}

int DialogUser::Selected(int id) const {
    return static_cast<int>(Send(Control(id), CB_GETCURSEL));
}

void DialogUser::Select(int id, int index) const {
    Focus(id);
    Send(Control(id), CB_SETCURSEL, static_cast<WPARAM>(index));
    Send(run_.Interface(), WM_COMMAND,
         MAKEWPARAM(static_cast<WORD>(id), static_cast<WORD>(CBN_SELCHANGE)),
         reinterpret_cast<LPARAM>(Control(id)));
    Settle();
}

int DialogUser::SliderPosition(int id) const {
    return static_cast<int>(Send(Control(id), TBM_GETPOS));
}

void DialogUser::SlideTo(int id, int position) const {
    if (FocusedWindow() != Control(id)) {
        Focus(id);
    }
    Send(Control(id), TBM_SETPOS, TRUE, position);
    Send(run_.Interface(), WM_HSCROLL, MAKEWPARAM(TB_THUMBTRACK, static_cast<WORD>(position)),
         reinterpret_cast<LPARAM>(Control(id)));
}

void DialogUser::EndSlide(int id) const {
    Send(run_.Interface(), WM_HSCROLL, TB_ENDTRACK, reinterpret_cast<LPARAM>(Control(id)));
}

RECT DialogUser::FrameRect() const {
    RECT rect = {};
    GetWindowRect(GetDlgItem(run_.Preview(), 1022), &rect);
    MapWindowPoints(nullptr, run_.Preview(), reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

POINT DialogUser::FrameMiddle() const {
    const RECT rect = FrameRect();
    return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

void DialogUser::PreviewMouse(UINT message, POINT point, WPARAM keys) const {
    Send(run_.Preview(), message, keys,
         MAKELPARAM(static_cast<WORD>(point.x), static_cast<WORD>(point.y)));
}

std::string DialogUser::PreviewTitle() const {
    char title[128] = {};
    Send(run_.Preview(), WM_GETTEXT, sizeof title, reinterpret_cast<LPARAM>(title));
    return title;
}

Shot DialogUser::ShootPreview() const {
    RECT client = {};
    GetClientRect(run_.Preview(), &client);
    Shot shot;
    shot.width = client.right;
    shot.height = client.bottom;
    const HDC window = GetDC(run_.Preview());
    const HDC memory = CreateCompatibleDC(window);
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = shot.width;
    info.bmiHeader.biHeight = -shot.height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const HBITMAP section = CreateDIBSection(window, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ before = SelectObject(memory, section);
    BitBlt(memory, 0, 0, shot.width, shot.height, window, 0, 0, SRCCOPY);
    GdiFlush();
    const auto* pixel = static_cast<const std::uint8_t*>(bits);
    for (int i = 0; i < shot.width * shot.height; ++i, pixel += 4) {
        shot.pixels.insert(shot.pixels.end(), {pixel[2], pixel[1], pixel[0]});
    }
    SelectObject(memory, before);
    DeleteObject(section);
    DeleteDC(memory);
    ReleaseDC(run_.Preview(), window);
    return shot;
}

bool DialogUser::PressOk() const {
    PostClick(IDOK);
    return run_.Finish();
}

bool DialogUser::PressCancel() const {
    PostClick(IDCANCEL);
    return run_.Finish();
}

HWND FindThreadWindow(DWORD threadId, const char* title) {
    TitleSearch search = {title, nullptr};
    EnumThreadWindows(threadId, LookForTitle, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND AwaitThreadWindow(DWORD threadId, const char* title) {
    HWND found = nullptr;
    Eventually([&] { return (found = FindThreadWindow(threadId, title)) != nullptr; });
    return found;
}

}  // namespace mv::windowstest
