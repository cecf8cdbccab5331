// Opens the dialog on a drawn picture and leaves it open, for screenshots and for trying it by
// hand: show_dialog [width height [seconds]]. Without seconds it stays until it is closed; with
// them it sets the two windows beside each other.
#include <cstdio>
#include <cstdlib>

#include "support/DialogRun.h"
#include "support/DialogUser.h"
#include "support/Registry.h"

int main(int count, char** arguments) {
    using namespace mv::windowstest;
    const int width = count > 2 ? std::atoi(arguments[1]) : 900;
    const int height = count > 2 ? std::atoi(arguments[2]) : 640;
    const unsigned seconds = count > 3 ? static_cast<unsigned>(std::atoi(arguments[3])) : 0;
    if (seconds > 0) {
        // For a picture of both windows neither may cover the other.
        const auto beside = static_cast<std::uint32_t>(GetSystemMetrics(SM_CXSCREEN) * 3 / 10);
        PutNumber("Preview Position X", beside);
        PutNumber("Preview Position Y", 0);
        PutNumber("Preview Position Width", beside * 2);
        PutNumber("Preview Position Height", beside * 3 / 2);
    }
    DialogRun run(ColorDocument(width, height));
    if (!run.Start()) {
        std::fprintf(stderr, "The dialog did not open.\n");
        return 1;
    }
    if (seconds > 0) {
        run.Finish(seconds * 1000);
        PostMessageA(run.Interface(), WM_COMMAND, IDCANCEL, 0);
    }
    run.Finish(INFINITE);
    std::printf("The filter ended with status %d.\n", run.Outcome().status);
    return 0;
}
