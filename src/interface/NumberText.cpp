#include "interface/NumberText.h"

#include <charconv>
#include <limits>

namespace mv {

namespace {

constexpr int kSignificantDigits = 6;

bool IsBlank(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsHexadecimalDigit(char c) noexcept {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Digits must follow: from_chars would take a sign, "inf" and "nan" there too.
bool StartsHexadecimal(std::string_view text) noexcept {
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
           (IsHexadecimalDigit(text[2]) || text[2] == '.');
}

// from_chars tells only that a number is out of range, not to which side; the exponent's sign
// does.
double OutOfRangeValue(std::string_view text) noexcept {
    const std::size_t exponent = text.find_first_of("eEpP");
    const bool tiny = exponent == std::string_view::npos ? text.find('.') == 0 || text[0] == '0'
                                                         : text.substr(exponent + 1, 1) == "-";
    return tiny ? 0.0 : std::numeric_limits<double>::infinity();
}

}  // namespace

void FormatNumber(double value, char (&text)[kNumberCapacity]) noexcept {
    const auto result = std::to_chars(text, text + kNumberCapacity - 1, value,
                                      std::chars_format::general, kSignificantDigits);
    *(result.ec == std::errc() ? result.ptr : text) = '\0';
}

bool ParseNumber(std::string_view text, double& value) noexcept {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    bool negative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    // A second sign is no number; from_chars would take a minus.
    if (text.empty() || text.front() == '-') {
        return false;
    }
    auto format = std::chars_format::general;
    if (StartsHexadecimal(text)) {
        text.remove_prefix(2);
        format = std::chars_format::hex;
    }
    double magnitude = 0.0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, magnitude, format);
    if (result.ec == std::errc::invalid_argument || result.ptr != end) {
        return false;
    }
    if (result.ec == std::errc::result_out_of_range) {
        magnitude = OutOfRangeValue(text);
    }
    value = negative ? -magnitude : magnitude;
    return true;
}

void TextWriter::Append(std::string_view text) noexcept {
    for (const char c : text) {
        if (position_ == last_) {
            break;
        }
        *position_++ = c;
    }
    *position_ = '\0';
}

void TextWriter::AppendNumber(double value) noexcept {
    char number[kNumberCapacity];
    FormatNumber(value, number);
    Append(number);
}

}  // namespace mv
