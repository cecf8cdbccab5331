// Numbers as the edits show and read them, in the "C" locale whatever the process has set.
#pragma once

#include <cstddef>
#include <string_view>

namespace mv {

constexpr int kNumberCapacity = 40;
// Six significant digits, as a stream prints a double by default.
void FormatNumber(double value, char (&text)[kNumberCapacity]) noexcept;

// What is typed counts only when the text is one number and nothing else behind it. Blanks and a
// plus sign ahead of it, hexadecimal, "inf" and "nan" are read as the C library reads them.
bool ParseNumber(std::string_view text, double& value) noexcept;

// Puts a text together in a buffer of fixed size: it needs no memory and cuts what is too long.
// Lives on its caller's stack, and the buffer is zero terminated after every call.
class TextWriter {
public:
    template <std::size_t capacity>
    explicit TextWriter(char (&buffer)[capacity]) noexcept
        : position_(buffer), last_(buffer + capacity - 1) {
        *position_ = '\0';
    }

    void Append(std::string_view text) noexcept;
    void AppendNumber(double value) noexcept;

private:
    char* position_;
    char* last_;
};

}  // namespace mv
