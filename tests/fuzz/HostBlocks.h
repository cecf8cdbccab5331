// The memory that a host's Buffer suite gives out, from one arena that is used again and again.
#pragma once

#include <cstdint>

namespace fuzzing {

// Blocks lie apart, and with the address sanitizer the gaps and the blocks that were given back
// must not be touched. Blocks start with bytes that make bad numbers of any type.
class HostBlocks {
public:
    HostBlocks();

    // Null when the arena is used up.
    char* New(std::uint32_t size);
    // Ends the process for what is no live block.
    void Dispose(char* block);
    int Live() const { return live_; }
    // To be called between inputs, when no block is live.
    void Restart();

private:
    struct Block {
        char* begin = nullptr;
        std::uint32_t size = 0;
        bool isLive = false;
    };
    static constexpr int kMostBlocks = 256;

    char* arena_;
    char* next_;
    Block blocks_[kMostBlocks];
    int count_ = 0;
    int live_ = 0;
};

}  // namespace fuzzing
