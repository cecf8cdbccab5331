// Module-wide flags that tie the dialog to the render's progress callback. Written on the
// dialog's thread; workers read them inside the progress lock.
#pragma once

#include <atomic>
#include <cstdint>

namespace mv {

// A re-render is wanted.
inline std::atomic<bool> previewDirty{false};

// TickCount() at the start of the current preview frame; 0 outside the dialog.
inline std::atomic<std::uint32_t> previewClock{0};

// The position handle is drawn; the "hide handle" check box shows the inverse.
inline std::atomic<bool> showHandle{true};

// A preview frame may be interrupted; the "fixed preview" check box shows the inverse.
inline std::atomic<bool> interruptible{true};

// A slider drag has made its undo record.
inline std::atomic<bool> scrollDragActive{false};

}  // namespace mv
