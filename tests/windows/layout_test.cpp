// Every control stands where the dialog's table says, in tab order, with its kind and text.
#include <windows.h>

#include <commctrl.h>

#include "support/DialogTest.h"

namespace mv::windowstest {
namespace {

enum class Kind { Default, Push, Edit, Slider, List, SortedList, Check, Group, Label };

struct Row {
    int id;
    Kind kind;
    const char* text;  // null where it shows a value
    int x, y, width, height;
};

constexpr Row kInterface[] = {
    {1, Kind::Default, "OK", 39, 350, 50, 14},
    {2, Kind::Push, "Cancel", 89, 350, 50, 14},
    {1031, Kind::Edit, nullptr, 61, 9, 28, 13},
    {1032, Kind::Edit, nullptr, 90, 9, 28, 13},
    {1011, Kind::Slider, nullptr, 33, 23, 115, 16},
    {1013, Kind::Edit, nullptr, 148, 25, 28, 13},
    {1025, Kind::Slider, nullptr, 33, 39, 115, 16},
    {1028, Kind::Edit, nullptr, 148, 41, 28, 13},
    {1033, Kind::Slider, nullptr, 33, 55, 115, 16},
    {1034, Kind::Edit, nullptr, 148, 57, 28, 13},
    {1035, Kind::Slider, nullptr, 33, 71, 115, 16},
    {1036, Kind::Edit, nullptr, 148, 73, 28, 13},
    {1037, Kind::List, nullptr, 27, 88, 73, 0},
    {1077, Kind::Check, "invert Gradient", 103, 89, 60, 11},
    {1009, Kind::List, nullptr, 27, 102, 73, 0},
    {1078, Kind::Check, "gamma correction", 103, 103, 70, 11},
    {1064, Kind::Slider, nullptr, 41, 123, 106, 16},
    {1066, Kind::Edit, nullptr, 147, 125, 28, 13},
    {1038, Kind::Slider, nullptr, 41, 138, 106, 16},
    {1039, Kind::Edit, nullptr, 147, 140, 28, 13},
    {1012, Kind::Slider, nullptr, 41, 154, 106, 16},
    {1014, Kind::Edit, nullptr, 147, 156, 28, 13},
    {1016, Kind::Slider, nullptr, 41, 170, 106, 16},
    {1017, Kind::Edit, nullptr, 147, 172, 28, 13},
    {1018, Kind::Slider, nullptr, 41, 185, 106, 16},
    {1019, Kind::Edit, nullptr, 147, 187, 28, 13},
    {1029, Kind::List, nullptr, 30, 209, 74, 0},
    {1080, Kind::Check, "extern is strength", 105, 210, 71, 11},
    {1065, Kind::Slider, nullptr, 41, 223, 106, 16},
    {1067, Kind::Edit, nullptr, 147, 224, 28, 13},
    {1020, Kind::Slider, nullptr, 41, 239, 106, 16},
    {1021, Kind::Edit, nullptr, 147, 240, 28, 13},
    {1022, Kind::Slider, nullptr, 41, 256, 106, 16},
    {1023, Kind::Edit, nullptr, 147, 256, 28, 13},
    {1024, Kind::Slider, nullptr, 41, 271, 106, 16},
    {1026, Kind::Edit, nullptr, 147, 272, 28, 13},
    {-1, Kind::Group, "options", 0, 0, 179, 120},
    {-1, Kind::Group, "alter color", 0, 115, 179, 90},
    {-1, Kind::Group, "selection", 0, 200, 179, 88},
    {-1, Kind::Label, "intensity", 4, 24, 29, 13},
    {-1, Kind::Label, "strength", 4, 40, 29, 13},
    {-1, Kind::Label, "gamma", 3, 124, 38, 13},
    {-1, Kind::Label, "blend", 3, 102, 23, 13},
    {-1, Kind::Label, "hue", 3, 155, 38, 13},
    {-1, Kind::Label, "saturation", 3, 171, 38, 13},
    {-1, Kind::Label, "lightness", 3, 187, 38, 13},
    {-1, Kind::Label, "low", 3, 224, 38, 13},
    {-1, Kind::Label, "high", 3, 240, 38, 13},
    {-1, Kind::Label, "soften", 3, 256, 38, 13},
    {-1, Kind::Label, "climax", 3, 272, 38, 13},
    {-1, Kind::Label, "show", 4, 209, 25, 13},
    {-1, Kind::Label, "x-position", 23, 9, 38, 13},
    {-1, Kind::Label, "y-position", 118, 9, 38, 13},
    {-1, Kind::Label, "contrast", 3, 140, 38, 13},
    {-1, Kind::Label, "start", 4, 56, 29, 13},
    {-1, Kind::Label, "holdout", 4, 72, 29, 13},
    {-1, Kind::Label, "mode", 3, 88, 23, 13},
    {1040, Kind::Push, "randomize", 4, 291, 38, 11},
    {1068, Kind::Slider, nullptr, 42, 289, 106, 15},
    {1069, Kind::Edit, nullptr, 148, 290, 28, 12},
    {1008, Kind::Push, "reset", 4, 303, 38, 11},
    {1004, Kind::Push, "undo", 4, 314, 38, 11},
    {1010, Kind::Push, "redo", 4, 325, 38, 11},
    {1081, Kind::Check, "fixed preview", 4, 337, 56, 10},
    {1006, Kind::Push, "-", 54, 306, 21, 16},
    {1005, Kind::Push, "+", 112, 306, 21, 16},
    {1001, Kind::SortedList, nullptr, 54, 324, 80, 0},
    {1015, Kind::Push, "open...", 148, 304, 29, 11},
    {1003, Kind::Push, "delete", 148, 315, 29, 11},
    {1002, Kind::Push, "save...", 148, 326, 29, 11},
    {1082, Kind::Check, "hide handle", 120, 338, 53, 10},
    {-1, Kind::Group, "", 0, 283, 179, 66},
    {1007, Kind::Label, nullptr, 80, 308, 27, 13},
};

struct Style {
    const char* windowClass;
    DWORD mask;
    DWORD bits;
};

Style StyleOf(Kind kind) {
    switch (kind) {
        case Kind::Default:
        case Kind::Push:
            return {"Button", WS_TABSTOP, WS_TABSTOP};
        case Kind::Check:
            return {"Button", BS_TYPEMASK | WS_TABSTOP, BS_AUTOCHECKBOX | WS_TABSTOP};
        case Kind::Group:
            return {"Button", BS_TYPEMASK | WS_TABSTOP, BS_GROUPBOX};
        case Kind::Edit:
            return {"Edit", ES_CENTER | ES_AUTOHSCROLL | WS_TABSTOP,
                    ES_CENTER | ES_AUTOHSCROLL | WS_TABSTOP};
        case Kind::Slider:
            return {"msctls_trackbar32", TBS_NOTICKS | WS_TABSTOP, TBS_NOTICKS | WS_TABSTOP};
        case Kind::List:
            return {"ComboBox", 3 | CBS_SORT | WS_TABSTOP, CBS_DROPDOWNLIST | WS_TABSTOP};
        case Kind::SortedList:
            return {"ComboBox", 3 | CBS_SORT | WS_TABSTOP,
                    CBS_DROPDOWNLIST | CBS_SORT | WS_TABSTOP};
        case Kind::Label:
            break;
    }
    return {"Static", SS_SUNKEN | WS_TABSTOP, SS_SUNKEN};
}

void ExpectRow(HWND dialog, HWND control, const Row& row) {
    SCOPED_TRACE(row.text != nullptr ? row.text : std::to_string(row.id));
    ASSERT_NE(control, nullptr);
    if (row.id != -1) {
        EXPECT_EQ(GetDlgCtrlID(control), row.id);
    }
    const Style style = StyleOf(row.kind);
    char text[128] = {};
    GetClassNameA(control, text, sizeof text);
    EXPECT_STRCASEEQ(text, style.windowClass);
    EXPECT_EQ(static_cast<DWORD>(GetWindowLongA(control, GWL_STYLE)) & style.mask, style.bits);
    if (row.text != nullptr) {
        text[0] = '\0';
        SendMessageA(control, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
        EXPECT_STREQ(text, row.text);
    }
    // Places and sizes are rounded to pixels apart from each other.
    RECT expected = {row.x, row.y, row.width, row.height};
    MapDialogRect(dialog, &expected);
    RECT actual = {};
    GetWindowRect(control, &actual);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&actual), 2);
    EXPECT_EQ(actual.left, expected.left);
    EXPECT_EQ(actual.top, expected.top);
    EXPECT_EQ(actual.right - actual.left, expected.right);
    if (row.height != 0) {
        EXPECT_EQ(actual.bottom - actual.top, expected.bottom);
    }
}

class Layout : public DialogTest {};

TEST_F(Layout, EveryControlOfTheInterface) {
    Open(60, 40);
    HWND control = GetWindow(run->Interface(), GW_CHILD);
    for (const Row& row : kInterface) {
        ExpectRow(run->Interface(), control, row);
        control = control == nullptr ? nullptr : GetWindow(control, GW_HWNDNEXT);
    }
    EXPECT_EQ(control, nullptr);
    RECT client = {};
    GetClientRect(run->Interface(), &client);
    RECT expected = {0, 0, 179, 365};
    MapDialogRect(run->Interface(), &expected);
    EXPECT_EQ(client.right, expected.right);
    EXPECT_EQ(client.bottom, expected.bottom);
    const auto style = static_cast<DWORD>(GetWindowLongA(run->Interface(), GWL_STYLE));
    EXPECT_EQ(style & (WS_CAPTION | WS_SYSMENU | WS_THICKFRAME), DWORD{WS_CAPTION});
}

TEST_F(Layout, ThePreviewWindow) {
    Open(60, 40);
    const auto style = static_cast<DWORD>(GetWindowLongA(run->Preview(), GWL_STYLE));
    const DWORD wanted = WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX;
    EXPECT_EQ(style & wanted, wanted);
    EXPECT_NE(GetWindowLongA(run->Preview(), GWL_EXSTYLE) & WS_EX_CLIENTEDGE, 0);
    char text[64] = {};
    GetDlgItemTextA(run->Preview(), 1022, text, sizeof text);
    EXPECT_STREQ(text, "Preview Frame");
    RECT window = {};
    GetWindowRect(run->Preview(), &window);
    const RECT frame = user->FrameRect();
    EXPECT_EQ(frame.right - frame.left,
              window.right - window.left - 2 * GetSystemMetrics(SM_CXFRAME));
    EXPECT_EQ(frame.bottom - frame.top, window.bottom - window.top -
                                            2 * GetSystemMetrics(SM_CYFRAME) -
                                            GetSystemMetrics(SM_CYCAPTION));
}

TEST_F(Layout, NoLabelIsWiderThanItsPlace) {
    Open(60, 40);
    for (HWND control = GetWindow(run->Interface(), GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        char name[64] = {};
        GetClassNameA(control, name, sizeof name);
        if (std::string(name) != "Static") {
            continue;
        }
        SendMessageA(control, WM_GETTEXT, sizeof name, reinterpret_cast<LPARAM>(name));
        const HDC context = GetDC(control);
        const HGDIOBJ before = SelectObject(
            context, reinterpret_cast<HGDIOBJ>(SendMessageA(control, WM_GETFONT, 0, 0)));
        SIZE size = {};
        GetTextExtentPoint32A(context, name, lstrlenA(name), &size);
        SelectObject(context, before);
        ReleaseDC(control, context);
        RECT rect = {};
        GetClientRect(control, &rect);
        EXPECT_LE(size.cx, rect.right) << name;
        EXPECT_LE(size.cy, rect.bottom) << name;
    }
}

}  // namespace
}  // namespace mv::windowstest
