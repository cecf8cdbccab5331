// Input that comes while a frame is being rendered.
#include <cstdio>

#include "support/DialogTest.h"

namespace mv::windowstest {
namespace {

class Frames : public DialogTest {
protected:
    // A picture whose full frames take some hundred milliseconds, shown at its full size.
    void OpenLarge(bool fixedPreview) {
        PutNumber("Preview Position Width", 400);
        PutNumber("Preview Position Height", 400);
        Prepare(ColorDocument(2000, 1500));
        Open();
        if (fixedPreview) {
            user->Click(1081);
        }
        SendMessageA(user->Control(1025), WM_NULL, 0, 0);
        user->Focus(1025);
        while (user->Text(1007) != "100%") {
            SendMessageA(user->Control(1005), BM_CLICK, 0, 0);
            user->Settle();
        }
        user->Focus(1025);
    }

    int CoarseRequests() {
        int coarse = 0;
        const auto requests = run->Requests();
        std::size_t first = 0;
        while (first < requests.size() && requests[first].inputRate >> 16 != 1) {
            ++first;
        }
        for (std::size_t i = first; i < requests.size(); ++i) {
            coarse += requests[i].inputRate >> 16 > 1 ? 1 : 0;
        }
        return coarse;
    }
};

TEST_F(Frames, ChangesMakeTheFramesCoarserAndQuietBringsTheFullPictureBack) {
    OpenLarge(false);
    for (int i = 0; i < 25; ++i) {
        user->SlideTo(1025, 30 + i);
        Sleep(60);
    }
    user->EndSlide(1025);
    user->Settle();
    EXPECT_GT(CoarseRequests(), 0);
    EXPECT_EQ(run->Requests().back().inputRate >> 16, 1);
    EXPECT_EQ(user->Text(1007), "100%");
    EXPECT_EQ(user->Text(1028), "0.54");
    user->Click(1004);
    EXPECT_EQ(user->Text(1028), "0.25");
    ASSERT_TRUE(user->PressCancel());
}

TEST_F(Frames, AFixedPreviewIsNeverInterrupted) {
    OpenLarge(true);
    for (int i = 0; i < 15; ++i) {
        user->SlideTo(1025, 30 + i);
        Sleep(60);
    }
    user->EndSlide(1025);
    user->Settle();
    EXPECT_EQ(CoarseRequests(), 0);
    ASSERT_TRUE(user->PressCancel());
}

TEST_F(Frames, OkInTheMiddleOfAFrameAcceptsAndCancelRefuses) {
    OpenLarge(false);
    user->SlideTo(1025, 60);
    Sleep(50);
    SendMessageA(run->Interface(), WM_COMMAND, IDOK, 0);
    ASSERT_TRUE(run->Finish(60000));
    EXPECT_EQ(run->Outcome().status, 0);
    EXPECT_DOUBLE_EQ(Number("STRE"), 0.6);
    DeleteSettings();
    OpenLarge(false);
    user->SlideTo(1025, 70);
    Sleep(50);
    const DWORD begin = GetTickCount();
    SendMessageA(run->Interface(), WM_COMMAND, IDCANCEL, 0);
    ASSERT_TRUE(run->Finish(60000));
    std::printf("Cancel in a frame took %lu ms.\n", GetTickCount() - begin);
    EXPECT_EQ(run->Outcome().status, -128);
}

TEST_F(Frames, PressingOkTwiceLeavesNoQuitMessageForTheHost) {
    OpenLarge(false);
    user->SlideTo(1025, 60);
    Sleep(30);
    for (int i = 0; i < 6; ++i) {
        PostMessageA(run->Interface(), WM_COMMAND, IDOK, 0);
        Sleep(20);
    }
    ASSERT_TRUE(run->Finish(60000));
    EXPECT_EQ(run->Outcome().status, 0);
    EXPECT_FALSE(run->QuitWasLeft());
}

TEST_F(Frames, TheDialogAnswersWhileAFrameIsRendered) {
    OpenLarge(false);
    user->SlideTo(1025, 61);
    DWORD longest = 0;
    for (int i = 0; i < 40; ++i) {
        const DWORD begin = GetTickCount();
        SendMessageA(run->Interface(), WM_NULL, 0, 0);
        longest = std::max(longest, GetTickCount() - begin);
        Sleep(15);
    }
    std::printf("The longest answer took %lu ms.\n", longest);
    // Generous, for machines that do other work at the same time.
    EXPECT_LT(longest, 2000u);
}

TEST_F(Frames, AZoomClickInAFrameIsServedAfterIt) {
    OpenLarge(true);
    user->SlideTo(1025, 60);
    Sleep(30);
    SendMessageA(user->Control(1006), BM_CLICK, 0, 0);
    user->Settle();
    EXPECT_EQ(user->Text(1007), "50%");
    EXPECT_EQ(run->Requests().back().inputRate >> 16, 2);
}

}  // namespace
}  // namespace mv::windowstest
