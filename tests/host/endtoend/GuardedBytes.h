// A buffer that ends exactly at a page that faults, with a checked pattern in front.
#pragma once

#include <cstddef>
#include <cstdint>

namespace endtoend {

// Reading or writing one byte behind the end stops the process; bytes written in front are found
// by FrontIntact(). The data is as unaligned as its size makes it.
class GuardedBytes {
public:
    explicit GuardedBytes(std::size_t size);
    ~GuardedBytes();
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    std::uint8_t* Data() const { return data_; }
    std::size_t Size() const { return size_; }
    bool FrontIntact() const;

private:
    std::uint8_t* whole_ = nullptr;
    std::size_t wholeSize_ = 0;
    std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace endtoend
