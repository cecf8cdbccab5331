#include "interface/SliderDrag.h"

#include <gtest/gtest.h>

namespace mv {
namespace {

// Runs one scroll message and tells whether it made an undo step.
bool Scroll(int code, bool changes, bool& active) {
    const bool makesUndo = ScrollMakesUndo(code, active);
    ScrollHandled(changes, active);
    return makesUndo && changes;
}

constexpr int kThumbTrack = 5;

TEST(SliderDrag, ADragThroughFortyValuesMakesOneStepAndTheNextASecond) {
    bool active = false;
    int steps = 0;
    for (int drag = 0; drag < 2; ++drag) {
        for (int value = 0; value < 40; ++value) {
            steps += Scroll(kThumbTrack, true, active) ? 1 : 0;
        }
        steps += Scroll(kEndScroll, false, active) ? 1 : 0;
        EXPECT_EQ(steps, drag + 1);
    }
}

TEST(SliderDrag, AMessageThatChangesNothingLeavesTheStepToTheNext) {
    bool active = false;
    EXPECT_FALSE(Scroll(kThumbTrack, false, active));
    EXPECT_TRUE(Scroll(kThumbTrack, true, active));
    EXPECT_FALSE(Scroll(kThumbTrack, true, active));
}

TEST(SliderDrag, TheEndOfADragMakesNoStepEvenWhenItChangesTheValue) {
    bool active = false;
    EXPECT_FALSE(Scroll(kEndScroll, true, active));
    EXPECT_FALSE(active);
}

}  // namespace
}  // namespace mv
