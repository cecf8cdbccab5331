#pragma once

namespace mv::windowstest {

// What this process holds at the moment, counted one by one. Under Wine the system's own counters
// always answer 0, so there each place of the tables is asked whether something lives in it.
struct ObjectCounts {
    unsigned gdi = 0;
    unsigned windows = 0;
    unsigned menus = 0;
    unsigned icons = 0;
    unsigned handles = 0;
    unsigned threads = 0;

    static ObjectCounts Now();
    // One of them alone, which is quicker.
    static unsigned Handles();
    static unsigned Threads();
    void Print(const char* when) const;
};

}  // namespace mv::windowstest
