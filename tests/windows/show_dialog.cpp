// Opens the dialog on a picture and leaves it open, for screenshots and for trying it by hand:
//
//     show_dialog [PICTURE [SECONDS [PRESETS]]]
//
// Without a picture it draws one, and without seconds it stays until it is closed. With seconds it
// sets the preview beside the dialog, with light rays in it. PRESETS is a preset file that is open.
#include <cstdio>
#include <cstdlib>

#include "pictures/PictureConversion.h"
#include "pictures/PictureFile.h"
#include "support/DialogRun.h"
#include "support/DialogUser.h"
#include "support/Registry.h"

namespace {

using hostapi::FourCharacterCode;
using mv::host::ScriptValues;

constexpr int kGap = 12;

// The preview in a size that shows all of the image, which must be known when it opens: the zoom
// that it begins with hangs on it.
void AskForPreviewSize(int width, int height) {
    RECT preview = {0, 0, width + 24, height + 24};
    AdjustWindowRectEx(&preview, WS_OVERLAPPEDWINDOW, FALSE, WS_EX_CLIENTEDGE);
    mv::windowstest::PutNumber("Preview Position Width",
                               static_cast<std::uint32_t>(preview.right - preview.left));
    mv::windowstest::PutNumber("Preview Position Height",
                               static_cast<std::uint32_t>(preview.bottom - preview.top));
}

// For a picture of both windows neither may cover the other.
void PutBeside(const mv::windowstest::DialogRun& run) {
    RECT dialog = {};
    GetWindowRect(run.Interface(), &dialog);
    SetWindowPos(run.Preview(), nullptr, dialog.right + kGap, dialog.top, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

ScriptValues LightRays() {
    return {{FourCharacterCode("ORIX"), 0.3},
            {FourCharacterCode("ORIY"), 0.25},
            {FourCharacterCode("STRE"), 0.9},
            {FourCharacterCode("INTE"), 1.6},
            {FourCharacterCode("SELL"), 170.0},
            {FourCharacterCode("SELS"), 0.5},
            {FourCharacterCode("BLND"), std::int32_t{3}}};
}

}  // namespace

int main(int count, char** words) {
    using namespace mv::windowstest;
    const unsigned seconds = count > 2 ? static_cast<unsigned>(std::atoi(words[2])) : 0;
    mv::host::HostDocument document = ColorDocument(900, 640);
    if (count > 1) {
        mv::host::Picture picture;
        const auto failure = mv::host::ReadPicture(mv::host::PathFromText(words[1]), picture);
        if (failure) {
            std::fprintf(stderr, "%s\n", failure->text.c_str());
            return 1;
        }
        document = mv::host::TakeDocument(picture);
    }
    if (count > 3) {
        PutText("Preset Path", words[3]);
    }
    if (seconds > 0) {
        AskForPreviewSize(document.image.width, document.image.height);
    }
    DialogRun run(std::move(document));
    if (seconds > 0) {
        run.Session().Play(LightRays());
    }
    if (!run.Start()) {
        std::fprintf(stderr, "The dialog did not open.\n");
        return 1;
    }
    if (seconds > 0) {
        PutBeside(run);
        run.Finish(seconds * 1000);
        PostMessageA(run.Interface(), WM_COMMAND, IDCANCEL, 0);
    }
    run.Finish(INFINITE);
    std::printf("The filter ended with status %d.\n", run.Outcome().status);
    return 0;
}
