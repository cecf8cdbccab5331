#include "parameters/pfUndoBuffer.h"

#include "parameters/pfUndo.h"

namespace mv {

pfUndoBuffer::~pfUndoBuffer() {
    for (const Entry& entry : entries_) {
        pfUndo::Release(entry.record);
    }
}

void pfUndoBuffer::DropOldestStep() noexcept {
    // A step is never cut in half: its records leave together, whatever their number.
    const std::int32_t step = At(oldest_).step;
    while (oldest_ < current_ && At(oldest_).step == step) {
        ++oldest_;
    }
}

void pfUndoBuffer::Push(pfUndo* record) noexcept {
    if (record == nullptr) {
        return;
    }
    if (!enabled_) {
        pfUndo::Release(record);
        return;
    }
    if (current_ - kCapacity >= oldest_) {
        DropOldestStep();
    }
    Entry& entry = At(current_);
    pfUndo::Release(entry.record);
    entry.record = record;
    entry.step = step_;
    // The records that could be redone stay in their slots, out of reach, until overwritten.
    newest_ = current_;
    ++current_;
}

void pfUndoBuffer::NextStep() noexcept {
    ++step_;
}

bool pfUndoBuffer::Undo() {
    if (!CanUndo()) {
        return false;
    }
    const std::int32_t step = At(current_ - 1).step;
    do {
        --current_;
        if (pfUndo* const record = At(current_).record; record != nullptr) {
            record->Apply();
        }
    } while (CanUndo() && At(current_ - 1).step == step);
    return true;
}

bool pfUndoBuffer::Redo() {
    if (!CanRedo()) {
        return false;
    }
    const std::int32_t step = At(current_).step;
    do {
        if (pfUndo* const record = At(current_).record; record != nullptr) {
            record->Apply();
        }
        ++current_;
    } while (CanRedo() && At(current_).step == step);
    return true;
}

}  // namespace mv
