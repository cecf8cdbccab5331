#include <windows.h>

#include <gtest/gtest.h>

int main(int count, char** arguments) {
    // A crash is to end the program and not to wait for somebody to close a box.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
