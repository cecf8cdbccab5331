#include <gtest/gtest.h>
#include <windows.h>

#include "platform/DebugConsole.h"

namespace mv {
namespace {

TEST(DebugConsole, OpensAWindowWithItsTitle) {
    DWORD mode = 0;
    if (::GetConsoleMode(::GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0) {
        GTEST_SKIP() << "closing the window would take the console of this run";
    }
    // As in a host with windows, which has no console before.
    ::FreeConsole();
    DebugConsole console;
    EXPECT_FALSE(console.IsOpen());
    console.Open();
    EXPECT_TRUE(console.IsOpen());
    char title[64] = {};
    ::GetConsoleTitleA(title, sizeof title);
    EXPECT_STREQ(title, "Debug Window");
    console.Write("text\n", 5);
    console.Close();
    EXPECT_FALSE(console.IsOpen());
}

}  // namespace
}  // namespace mv
