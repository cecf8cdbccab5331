// One undo step for a whole slider drag.
#pragma once

namespace mv {

constexpr int kEndScroll = 8;

// Whether this scroll message may make an undo record. The first message of a drag may, and the
// end of the drag re-arms.
inline bool ScrollMakesUndo(int code, bool& dragActive) noexcept {
    if (code == kEndScroll) {
        dragActive = false;
        return false;
    }
    const bool first = !dragActive;
    dragActive = true;
    return first;
}

// A message that changed nothing has not opened a step, so the next one may.
inline void ScrollHandled(bool changed, bool& dragActive) noexcept {
    if (!changed) {
        dragActive = false;
    }
}

}  // namespace mv
