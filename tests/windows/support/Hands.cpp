#include "support/Hands.h"

namespace mv::windowstest {

namespace {

void SendMouse(DWORD flags, LONG x = 0, LONG y = 0) {
    INPUT input = {};
    input.type = INPUT_MOUSE;
    input.mi.dx = x;
    input.mi.dy = y;
    input.mi.dwFlags = flags;
    SendInput(1, &input, sizeof input);
}

void SendKey(WORD key, DWORD flags) {
    INPUT input = {};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyA(key, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = flags;
    SendInput(1, &input, sizeof input);
}

// The place of a pixel on the scale of 65536 that absolute movements have.
LONG Absolute(LONG pixel, int size) {
    return (pixel * 65536 + 32768) / size;
}

}  // namespace

void Hands::MoveTo(POINT screen) {
    SendMouse(MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE,
              Absolute(screen.x, GetSystemMetrics(SM_CXSCREEN)),
              Absolute(screen.y, GetSystemMetrics(SM_CYSCREEN)));
}

void Hands::Glide(POINT from, POINT to, int steps) {
    for (int i = 1; i <= steps; ++i) {
        MoveTo({from.x + (to.x - from.x) * i / steps, from.y + (to.y - from.y) * i / steps});
        Sleep(2);
    }
    // Of movements that come close together a busy window system may swallow the last.
    Sleep(20);
    MoveTo({to.x - 1, to.y});
    Sleep(20);
    MoveTo(to);
    Sleep(20);
}

void Hands::Press(bool rightButton) {
    SendMouse(rightButton ? MOUSEEVENTF_RIGHTDOWN : MOUSEEVENTF_LEFTDOWN);
}

void Hands::Release(bool rightButton) {
    SendMouse(rightButton ? MOUSEEVENTF_RIGHTUP : MOUSEEVENTF_LEFTUP);
}

void Hands::ClickAt(POINT screen) {
    MoveTo(screen);
    Press();
    Release();
}

void Hands::Click(HWND window) {
    ClickAt(MiddleOf(window));
}

void Hands::Key(WORD key) {
    SendKey(key, 0);
    SendKey(key, KEYEVENTF_KEYUP);
}

void Hands::KeyWith(WORD modifier, WORD key) {
    SendKey(modifier, 0);
    Key(key);
    SendKey(modifier, KEYEVENTF_KEYUP);
}

void Hands::Type(const std::string& text) {
    for (const char c : text) {
        const SHORT key = VkKeyScanA(c);
        if ((key & 0x100) != 0) {
            KeyWith(VK_SHIFT, LOBYTE(key));
        } else {
            Key(LOBYTE(key));
        }
    }
}

POINT Hands::MiddleOf(HWND window) {
    RECT rect = {};
    GetWindowRect(window, &rect);
    return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

POINT Hands::OnScreen(HWND window, POINT client) {
    ClientToScreen(window, &client);
    return client;
}

}  // namespace mv::windowstest
