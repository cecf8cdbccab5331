// Numbers as preset files hold them: always as in the "C" locale, whatever the process has set.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mv {

// The longest beginning of the token that is a number, as the C library's atof takes decimal
// ones, "inf" and "nan". 0.0 when there is none; infinity when it is too large.
double ParseFloat(std::string_view token) noexcept;

// The same as atoi takes it. A number beyond 32 bits becomes the nearest end.
std::int32_t ParseInt(std::string_view token) noexcept;

// Appends what "%f" prints: six decimals, and every digit in front of them.
void AppendFloat(std::string& text, double value);

// Appends what "%i" prints.
void AppendInt(std::string& text, std::int32_t value);

}  // namespace mv
