// What a side of the blur adds where earlier sides reach too, kept for later.
#pragma once

#include <algorithm>
#include <cstdint>

#include "frame/MorvenhaleRenderContext.h"
#include "image/PixelRGB.h"

namespace mv {

// Contributions in the order in which they were made. Blocks come from the render context and go
// back to it. One thread appends; the list is read when all sides are done.
template <int channels>
class ContributionList {
public:
    struct Entry {
        std::uint32_t pixel;  // row times width plus column
        float weight;
        ChannelArray<double, channels> value;
    };

    ContributionList() = default;
    ~ContributionList() { Clear(); }
    ContributionList(const ContributionList&) = delete;
    ContributionList& operator=(const ContributionList&) = delete;

    void SetContext(MorvenhaleRenderContext* context) { context_ = context; }

    // Gets the memory for so many entries at once. False when there is none.
    bool Reserve(std::uint32_t entries) { return entries == 0 || Grow(entries); }

    // Null when there is no memory.
    Entry* Append() {
        if (last_ == nullptr || last_->used == last_->capacity) {
            if (!Grow(last_ == nullptr ? kFirstCapacity
                                       : std::min(last_->capacity * 2, kLargestCapacity))) {
                return nullptr;
            }
        }
        return Entries(last_) + last_->used++;
    }

    // Calls goOn after some ten thousand entries each; ends when that says no.
    template <class Visitor, class Watcher>
    void ForEach(Visitor visit, Watcher goOn) const {
        for (const Block* block = first_; block != nullptr; block = block->next) {
            const Entry* entries = Entries(block);
            for (std::uint32_t i = 0; i < block->used;) {
                const std::uint32_t end = std::min(block->used, i + kLargestCapacity);
                for (; i < end; ++i) {
                    visit(entries[i]);
                }
                if (!goOn()) {
                    return;
                }
            }
        }
    }

    void Clear() {
        while (first_ != nullptr) {
            Block* next = first_->next;
            context_->FreeMemory(first_);
            first_ = next;
        }
        last_ = nullptr;
    }

private:
    struct Block {
        Block* next;
        std::uint32_t used;
        std::uint32_t capacity;
    };

    static constexpr std::uint32_t kFirstCapacity = 64;
    static constexpr std::uint32_t kLargestCapacity = 16384;

    static Entry* Entries(Block* block) { return reinterpret_cast<Entry*>(block + 1); }
    static const Entry* Entries(const Block* block) {
        return reinterpret_cast<const Entry*>(block + 1);
    }

    bool Grow(std::uint32_t capacity) {
        static_assert(sizeof(Block) % alignof(Entry) == 0);
        const std::uint64_t bytes = sizeof(Block) + std::uint64_t{capacity} * sizeof(Entry);
        auto* block = static_cast<Block*>(AllocateBlock(*context_, bytes));
        if (block == nullptr) {
            return false;
        }
        *block = {nullptr, 0, capacity};
        (last_ == nullptr ? first_ : last_->next) = block;
        last_ = block;
        return true;
    }

    MorvenhaleRenderContext* context_ = nullptr;
    Block* first_ = nullptr;
    Block* last_ = nullptr;
};

}  // namespace mv
