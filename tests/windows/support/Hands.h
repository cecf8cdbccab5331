#pragma once

#include <windows.h>

#include <string>

namespace mv::windowstest {

// A person's mouse and keyboard: input as it comes from the devices, at places of the screen and
// to whatever has the focus there. It is served some time later.
class Hands {
public:
    static void MoveTo(POINT screen);
    // In steps, as a hand moves.
    static void Glide(POINT from, POINT to, int steps);
    static void Press(bool rightButton = false);
    static void Release(bool rightButton = false);
    static void ClickAt(POINT screen);
    static void Click(HWND window);
    static void Key(WORD key);
    static void KeyWith(WORD modifier, WORD key);
    // Letters, digits, and signs that need no dead key.
    static void Type(const std::string& text);

    static POINT MiddleOf(HWND window);
    static POINT OnScreen(HWND window, POINT client);
};

}  // namespace mv::windowstest
