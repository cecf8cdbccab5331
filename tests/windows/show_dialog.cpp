// Opens the dialog on a drawn picture and leaves it open, for screenshots and for trying it by
// hand: show_dialog [width height [seconds]]. Without seconds it stays until it is closed.
#include <cstdio>
#include <cstdlib>

#include "support/DialogRun.h"
#include "support/DialogUser.h"

int main(int count, char** arguments) {
    using namespace mv::windowstest;
    const int width = count > 2 ? std::atoi(arguments[1]) : 900;
    const int height = count > 2 ? std::atoi(arguments[2]) : 640;
    const unsigned seconds = count > 3 ? static_cast<unsigned>(std::atoi(arguments[3])) : 0;
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
