#include "parameters/NumberText.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace mv {

namespace {

constexpr int kDecimals = 6;
// The largest double has 309 digits in front of the point.
constexpr int kLongestFloat = 400;

bool IsDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

bool SkipSign(std::string_view& token) noexcept {
    const bool negative = !token.empty() && token.front() == '-';
    if (negative || (!token.empty() && token.front() == '+')) {
        token.remove_prefix(1);
    }
    return negative;
}

// Whether a number that does not fit is too large rather than too small. Its order of magnitude
// tells: the two cases lie hundreds of digits apart.
bool IsTooLarge(std::string_view number) noexcept {
    std::int64_t magnitude = 0;
    bool pointSeen = false;
    bool significant = false;
    std::size_t i = 0;
    for (; i < number.size() && (IsDigit(number[i]) || number[i] == '.'); ++i) {
        if (number[i] == '.') {
            pointSeen = true;
            continue;
        }
        significant = significant || number[i] != '0';
        if (significant && !pointSeen) {
            ++magnitude;
        } else if (!significant && pointSeen) {
            --magnitude;
        }
    }
    const std::int64_t exponent = i < number.size() ? ParseInt(number.substr(i + 1)) : 0;
    return magnitude + exponent > 0;
}

}  // namespace

double ParseFloat(std::string_view token) noexcept {
    const bool negative = SkipSign(token);
    // A second sign is no part of a number.
    if (token.empty() || token.front() == '-' || token.front() == '+') {
        return 0.0;
    }
    double value = 0.0;
    const auto result = std::from_chars(token.data(), token.data() + token.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        value = IsTooLarge(token) ? std::numeric_limits<double>::infinity() : 0.0;
    } else if (result.ec != std::errc()) {
        return 0.0;
    }
    return negative ? -value : value;
}

std::int32_t ParseInt(std::string_view token) noexcept {
    constexpr std::int64_t kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t kHighest = std::numeric_limits<std::int32_t>::max();
    const bool negative = SkipSign(token);
    std::int64_t value = 0;
    for (const char character : token) {
        if (!IsDigit(character) || value > kHighest) {
            break;
        }
        value = value * 10 + (character - '0');
    }
    return static_cast<std::int32_t>(std::clamp(negative ? -value : value, kLowest, kHighest));
}

void AppendFloat(std::string& text, double value) {
    char buffer[kLongestFloat];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, kDecimals);
    text.append(buffer, result.ptr);
}

void AppendInt(std::string& text, std::int32_t value) {
    char buffer[16];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    text.append(buffer, result.ptr);
}

}  // namespace mv
