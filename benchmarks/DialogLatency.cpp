// How fast the dialog answers while it renders a large preview: a Windows program that opens the
// real dialog on a picture of 24 megapixels at full size and acts while frames are rendered.
//     dialog_latency [width height]
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "support/DialogRun.h"
#include "support/DialogUser.h"
#include "support/Registry.h"

namespace {

using namespace mv::windowstest;

constexpr int kSlider = 1025;
constexpr int kZoomIn = 1005;
constexpr int kZoomText = 1007;

double Milliseconds() {
    LARGE_INTEGER now = {};
    LARGE_INTEGER frequency = {};
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return 1000.0 * static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

// When the host was last asked for a picture, and how large that was.
std::atomic<double> requestTime{0.0};
std::atomic<int> requestFactor{0};

struct Longest {
    double answer = 0.0;
    double interruption = 0.0;
    double end = 0.0;
};

// A message that is sent is answered at the render's next report of progress.
double LongestAnswer(const DialogRun& run, double milliseconds) {
    double longest = 0.0;
    for (const double begin = Milliseconds(); Milliseconds() - begin < milliseconds;) {
        const double sent = Milliseconds();
        SendMessageA(run.Interface(), WM_NULL, 0, 0);
        longest = std::max(longest, Milliseconds() - sent);
        Sleep(3);
    }
    return longest;
}

// From a change in the middle of a full frame to the request for the next, coarser picture.
double Interruption(const DialogUser& user, int position) {
    user.SlideTo(kSlider, position);
    Sleep(300);
    const double begin = Milliseconds();
    user.SlideTo(kSlider, position + 1);
    while (requestTime < begin && Milliseconds() - begin < 60000.0) {
        Sleep(1);
    }
    return requestTime - begin;
}

bool OpenAtFullSize(DialogRun& run, const DialogUser& user) {
    run.Session().Hooks().beforeAdvance = [](hostapi::FilterRecord& record) {
        requestTime = Milliseconds();
        requestFactor = record.inputRate >> 16;
    };
    if (!run.Start()) {
        std::fprintf(stderr, "The dialog did not open.\n");
        return false;
    }
    for (int clicks = 0; user.Text(kZoomText) != "100%" && clicks < 100; ++clicks) {
        SendMessageA(user.Control(kZoomIn), BM_CLICK, 0, 0);
        for (int i = 0; i < 200 && requestFactor > 1; ++i) {
            Sleep(1);
        }
    }
    user.Settle();
    user.Focus(kSlider);
    return true;
}

bool Measure(int width, int height, Longest& longest) {
    // The blocks that the host gives are not filled by it: that would be measured as well.
    DialogRun run(ColorDocument(width, height), {.freshBytes = mv::host::FreshBytes::Unset});
    const DialogUser user(run);
    if (!OpenAtFullSize(run, user)) {
        return false;
    }
    user.SlideTo(kSlider, 30);
    longest.answer = std::max(longest.answer, LongestAnswer(run, 1500.0));
    user.Settle();
    longest.interruption = std::max(longest.interruption, Interruption(user, 40));
    user.Settle();
    user.SlideTo(kSlider, 60);
    Sleep(300);
    const double begin = Milliseconds();
    PostMessageA(run.Interface(), WM_COMMAND, IDCANCEL, 0);
    run.Finish();
    longest.end = std::max(longest.end, Milliseconds() - begin);
    return true;
}

}  // namespace

int main(int count, char** arguments) {
    const int width = count > 2 ? std::atoi(arguments[1]) : 6000;
    const int height = count > 2 ? std::atoi(arguments[2]) : 4000;
    PutNumber("Preview Position Width", 600);
    PutNumber("Preview Position Height", 500);
    Longest longest;
    for (int round = 0; round < 3; ++round) {
        if (!Measure(width, height, longest)) {
            return 1;
        }
    }
    std::printf(
        "| %d x %d, preview at full size, longest of three | ms |\n|---|---|\n"
        "| a message during a frame is answered | %.1f |\n"
        "| a change in a frame that is 300 ms old stops it | %.1f |\n"
        "| Cancel in a frame ends the dialog | %.1f |\n",
        width, height, longest.answer, longest.interruption, longest.end);
    return 0;
}
