// Bytes of a file that nobody vouches for.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace mv::host {

// A window on bytes that the caller keeps. Every read is checked: what lies outside is empty.
// Numbers are little-endian, as in all the formats that are looked at here.
class ByteView {
public:
    ByteView() = default;
    explicit ByteView(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::uint64_t Size() const { return bytes_.size(); }
    bool Holds(std::uint64_t offset, std::uint64_t size) const {
        return offset <= bytes_.size() && size <= bytes_.size() - offset;
    }
    std::optional<std::uint8_t> U8(std::uint64_t offset) const {
        return Read<std::uint8_t>(offset);
    }
    std::optional<std::uint16_t> U16(std::uint64_t offset) const {
        return Read<std::uint16_t>(offset);
    }
    std::optional<std::uint32_t> U32(std::uint64_t offset) const {
        return Read<std::uint32_t>(offset);
    }
    std::optional<std::uint64_t> U64(std::uint64_t offset) const {
        return Read<std::uint64_t>(offset);
    }
    std::optional<ByteView> Part(std::uint64_t offset, std::uint64_t size) const {
        if (!Holds(offset, size)) {
            return {};
        }
        return ByteView(bytes_.subspan(static_cast<std::size_t>(offset),  //
                                       static_cast<std::size_t>(size)));
    }
    // All from an offset on; empty beyond the end.
    ByteView From(std::uint64_t offset) const {
        return ByteView(bytes_.subspan(
            static_cast<std::size_t>(std::min<std::uint64_t>(offset, bytes_.size()))));
    }
    // Up to a zero, the end, or a length that no sound text has.
    std::string Text(std::uint64_t offset, std::size_t longest = 256) const {
        std::string text;
        for (const std::uint8_t byte : From(offset).bytes_) {
            if (byte == 0 || text.size() == longest) {
                break;
            }
            text += static_cast<char>(byte);
        }
        return text;
    }
    std::span<const std::uint8_t> Bytes() const { return bytes_; }

private:
    template <class Number>
    std::optional<Number> Read(std::uint64_t offset) const {
        if (!Holds(offset, sizeof(Number))) {
            return {};
        }
        std::uint64_t value = 0;
        for (std::size_t i = sizeof(Number); i > 0; --i) {
            value = value << 8 | bytes_[static_cast<std::size_t>(offset) + i - 1];
        }
        return static_cast<Number>(value);
    }

    std::span<const std::uint8_t> bytes_;
};

// "MC01" of a code that is held as a number, most significant letter first.
std::string CodeText(std::uint32_t code);
// Letters, digits and signs stay; anything that could upset a terminal becomes '?'.
std::string Printable(const std::string& text);

}  // namespace mv::host
