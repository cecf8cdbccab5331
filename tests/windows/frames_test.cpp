// Input that comes while a frame is being rendered. It is put into the dialog's queue from inside
// the render, where that asks the host for memory, together with a wait that makes the frame as
// slow as a large picture would: so the same thing happens on a fast machine and on a busy one.
#include <windows.h>

#include <commctrl.h>

#include <atomic>
#include <cstdio>
#include <deque>
#include <functional>

#include "support/DialogTest.h"

namespace mv::windowstest {
namespace {

constexpr int kSlider = 1025;
constexpr int kStrength = 1028;
constexpr int kZoomText = 1007;
constexpr UINT kWait = WM_APP + 78;
// Beyond the patience of a frame.
constexpr WPARAM kLong = 230;

using Input = std::function<void()>;

struct InFrames {
    std::atomic<bool> armed{false};
    std::deque<Input> inputs;  // one for each of the next frames, which are of new pictures
    bool served = false;       // this frame has had its input
    DialogRun* run = nullptr;
    std::size_t requests = 0;
    hostapi::Ptr (*allocate)(std::uint32_t*, std::uint32_t) = nullptr;
} inFrames;

// The first block after a new picture is the preview's own buffer; all others are the render's.
hostapi::Ptr Allocate(std::uint32_t* size, std::uint32_t minimum) {
    if (inFrames.armed && GetCurrentThreadId() == inFrames.run->ThreadId()) {
        const std::size_t requests = inFrames.run->Requests().size();
        if (requests != inFrames.requests) {
            inFrames.requests = requests;
            inFrames.served = false;
        } else if (!inFrames.served) {
            inFrames.served = true;
            const Input input = inFrames.inputs.front();
            inFrames.inputs.pop_front();
            inFrames.armed = !inFrames.inputs.empty();
            input();
        }
    }
    return inFrames.allocate(size, minimum);
}

LRESULT CALLBACK WaitInQueue(int code, WPARAM removed, LPARAM parameter) {
    const auto* message = reinterpret_cast<const MSG*>(parameter);
    if (code == HC_ACTION && removed == PM_REMOVE && message->message == kWait) {
        Sleep(static_cast<DWORD>(message->wParam));
    }
    return CallNextHookEx(nullptr, code, removed, parameter);
}

class Frames : public DialogTest {
protected:
    void TearDown() override {
        inFrames.armed = false;
        if (hook_ != nullptr) {
            UnhookWindowsHookEx(hook_);
        }
        DialogTest::TearDown();
    }

    void OpenPicture() {
        PutNumber("Preview Position Width", 400);
        PutNumber("Preview Position Height", 400);
        Prepare(ColorDocument(300, 220));
        inFrames.allocate = run->Session().BufferSuite().New;
        inFrames.run = run.get();
        run->Session().BufferSuite().New = Allocate;
        Open();
        hook_ = SetWindowsHookExA(WH_GETMESSAGE, WaitInQueue, nullptr, run->ThreadId());
        ASSERT_NE(hook_, nullptr);
        user->Focus(kSlider);
    }

    // What comes in the next frame and in those that its interruption brings.
    void Arm(std::deque<Input> inputs) {
        inFrames.inputs = std::move(inputs);
        inFrames.requests = run->Requests().size();
        inFrames.served = false;
        inFrames.armed = true;
    }

    Input Slide(int position, WPARAM wait) {
        return [=, this] {
            PostMessageA(user->Control(kSlider), TBM_SETPOS, TRUE, position);
            PostMessageA(run->Interface(), WM_HSCROLL, TB_THUMBTRACK,
                         reinterpret_cast<LPARAM>(user->Control(kSlider)));
            PostMessageA(run->Interface(), kWait, wait, 0);
        };
    }
    Input Press(int id, WPARAM wait) {
        return [=, this] {
            PostMessageA(run->Interface(), WM_COMMAND, static_cast<WPARAM>(id), 0);
            PostMessageA(run->Interface(), kWait, wait, 0);
        };
    }

    std::vector<int> Factors() {
        std::vector<int> factors;
        for (const AdvanceRequest& request : run->Requests()) {
            factors.push_back(request.inputRate >> 16);
        }
        return factors;
    }

private:
    HHOOK hook_ = nullptr;
};

TEST_F(Frames, EachInterruptionMakesTheNextFrameCoarserAndQuietBringsTheFullPictureBack) {
    OpenPicture();
    Arm({Slide(40, kLong), Slide(50, kLong)});
    user->SlideTo(kSlider, 30);
    user->Settle();
    EXPECT_FALSE(inFrames.armed);
    EXPECT_EQ(Factors(), (std::vector<int>{1, 2, 3, 1}));
    EXPECT_EQ(user->Text(kZoomText), "100%");
    EXPECT_EQ(user->Text(kStrength), "0.5");
    user->EndSlide(kSlider);
    user->Click(1004);
    EXPECT_EQ(user->Text(kStrength), "0.25");
    EXPECT_FALSE(user->Enabled(1004));
    ASSERT_TRUE(user->PressOk());
    EXPECT_EQ(Factors(), (std::vector<int>{1, 2, 3, 1, 1}));
}

TEST_F(Frames, ReducedAndMagnifiedViewsGetCoarserFromTheirOwnFactor) {
    OpenPicture();
    user->Click(1006);
    EXPECT_EQ(user->Text(kZoomText), "50%");
    user->Focus(kSlider);
    Arm({Slide(40, kLong), Slide(50, kLong)});
    user->SlideTo(kSlider, 30);
    user->Settle();
    EXPECT_EQ(Factors(), (std::vector<int>{1, 2, 3, 4, 2}));
    user->Click(1005);
    user->Click(1005);
    EXPECT_EQ(user->Text(kZoomText), "133.3%");
    user->Focus(kSlider);
    Arm({Slide(60, kLong)});
    user->SlideTo(kSlider, 70);
    user->Settle();
    EXPECT_EQ(Factors(), (std::vector<int>{1, 2, 3, 4, 2, 1, 2, 1}));
    EXPECT_EQ(user->Text(kStrength), "0.6");
}

TEST_F(Frames, AChangeInTheFirstMomentsLetsTheFrameEndAndIsRenderedAtTheSameLevel) {
    OpenPicture();
    Arm({Slide(40, 0)});
    user->SlideTo(kSlider, 30);
    user->Settle();
    EXPECT_FALSE(inFrames.armed);
    EXPECT_EQ(Factors(), (std::vector<int>{1}));
    EXPECT_EQ(user->Text(kStrength), "0.4");
}

TEST_F(Frames, AFixedPreviewIsNeverInterrupted) {
    OpenPicture();
    user->Click(1081);
    user->Focus(kSlider);
    Arm({[this] {
        for (const int position : {40, 50, 60}) {
            Slide(position, kLong)();
        }
    }});
    user->SlideTo(kSlider, 30);
    user->Settle();
    EXPECT_FALSE(inFrames.armed);
    EXPECT_EQ(Factors(), (std::vector<int>{1}));
    EXPECT_EQ(user->Text(kStrength), "0.6");
}

TEST_F(Frames, OkAndCancelInTheMiddleOfAFrameEndTheDialog) {
    for (const int button : {IDOK, IDCANCEL}) {
        DeleteSettings();
        OpenPicture();
        Arm({Press(button, 0)});
        user->SlideTo(kSlider, 60);
        ASSERT_TRUE(run->Finish());
        EXPECT_FALSE(inFrames.armed);
        EXPECT_EQ(run->Outcome().status, button == IDOK ? 0 : -128);
        EXPECT_DOUBLE_EQ(Number("STRE"), 0.6);
        EXPECT_FALSE(run->QuitWasLeft());
        EXPECT_EQ(KeyExists(true), button == IDOK);
        user.reset();
        run.reset();
        DialogRun::UnloadModule();
    }
}

TEST_F(Frames, PressingOkTwiceLeavesNoQuitMessageForTheHost) {
    OpenPicture();
    Arm({[this] {
        for (int i = 0; i < 6; ++i) {
            PostMessageA(run->Interface(), WM_COMMAND, IDOK, 0);
        }
    }});
    user->SlideTo(kSlider, 60);
    ASSERT_TRUE(run->Finish());
    EXPECT_EQ(run->Outcome().status, 0);
    EXPECT_FALSE(run->QuitWasLeft());
    // Once more with one press in the queue and one in the frame that it still brings.
    OpenPicture();
    Arm({Press(IDOK, 0)});
    user->SlideTo(kSlider, 61);
    PostMessageA(run->Interface(), WM_COMMAND, IDOK, 0);
    ASSERT_TRUE(run->Finish());
    EXPECT_EQ(run->Outcome().status, 0);
    EXPECT_FALSE(run->QuitWasLeft());
}

TEST_F(Frames, AZoomClickInAFrameIsServedAfterIt) {
    OpenPicture();
    Arm({Press(1006, kLong)});
    user->SlideTo(kSlider, 60);
    user->Settle();
    EXPECT_EQ(user->Text(kZoomText), "50%");
    // The interrupted frame makes the next one coarser, and that is at the new step already.
    EXPECT_EQ(Factors(), (std::vector<int>{1, 3, 2}));
    user->Click(1081);
    user->Focus(kSlider);
    Arm({Press(1006, kLong)});
    user->SlideTo(kSlider, 40);
    user->Settle();
    EXPECT_EQ(user->Text(kZoomText), "33.33%");
    EXPECT_EQ(Factors(), (std::vector<int>{1, 3, 2, 3}));
}

TEST_F(Frames, UndoAndResetInAFrameCountAsChanges) {
    OpenPicture();
    user->SlideTo(kSlider, 35);
    user->EndSlide(kSlider);
    user->Settle();
    Arm({Press(1004, kLong), Press(1010, kLong), Press(1008, kLong)});
    user->SlideTo(kSlider, 60);
    user->Settle();
    EXPECT_FALSE(inFrames.armed);
    EXPECT_EQ(user->Text(kStrength), "0.25");
    EXPECT_EQ(Factors(), (std::vector<int>{1, 2, 3, 4, 1}));
    user->Click(1004);
    EXPECT_EQ(user->Text(kStrength), "0.6");
    user->Click(1004);
    EXPECT_EQ(user->Text(kStrength), "0.35");
}

TEST_F(Frames, TheDialogAnswersWhileALargePictureIsRendered) {
    PutNumber("Preview Position Width", 400);
    PutNumber("Preview Position Height", 400);
    Open(2000, 1500);
    for (int i = 0; i < 5; ++i) {
        SendMessageA(user->Control(1005), BM_CLICK, 0, 0);
        user->Settle();
    }
    EXPECT_EQ(user->Text(kZoomText), "100%");
    user->Focus(kSlider);
    user->SlideTo(kSlider, 61);
    DWORD longest = 0;
    for (int i = 0; i < 25; ++i) {
        const DWORD begin = GetTickCount();
        SendMessageA(run->Interface(), WM_NULL, 0, 0);
        longest = std::max(longest, GetTickCount() - begin);
        Sleep(15);
    }
    std::printf("The longest answer took %lu ms.\n", longest);
    // Generous, for machines that do other work at the same time.
    EXPECT_LT(longest, 3000u);
}

}  // namespace
}  // namespace mv::windowstest
