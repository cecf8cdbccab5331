#pragma once

#include <cstdint>

namespace mv {

class pfUndo;

// The undo history of the dialog: a ring of 500 records, grouped into steps. A member of the
// filter, so that it costs one fixed allocation; only the dialog's thread comes here.
class pfUndoBuffer {
public:
    static constexpr std::int32_t kCapacity = 500;

    pfUndoBuffer() = default;
    ~pfUndoBuffer();
    pfUndoBuffer(const pfUndoBuffer&) = delete;
    pfUndoBuffer& operator=(const pfUndoBuffer&) = delete;

    // While the buffer is off, which it is at first, records are dropped.
    void SetEnabled(bool value) noexcept { enabled_ = value; }
    // Adds a record to the step being gathered and owns it from here on. Null is ignored: there
    // was no memory for it, and the change stands without undo.
    void Push(pfUndo* record) noexcept;
    // Closes the step being gathered.
    void NextStep() noexcept;
    // True when at least one record was applied.
    bool Undo();
    bool Redo();
    bool CanUndo() const noexcept { return current_ > oldest_; }
    bool CanRedo() const noexcept { return current_ <= newest_; }

private:
    struct Entry {
        pfUndo* record = nullptr;
        std::int32_t step = -1;
    };

    Entry& At(std::int32_t position) noexcept { return entries_[position % kCapacity]; }
    void DropOldestStep() noexcept;

    // Logical positions only grow; the slot of position p is p mod 500.
    Entry entries_[kCapacity];
    std::int32_t oldest_ = 0;
    std::int32_t newest_ = -1;
    std::int32_t current_ = 0;
    std::int32_t step_ = 0;
    bool enabled_ = false;
};

}  // namespace mv
