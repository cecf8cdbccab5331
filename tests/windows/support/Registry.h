#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mv::windowstest {

// The user's registry, apart from the module: what it holds, and what it is made to hold.
void DeleteSettings();
bool KeyExists(bool lastUsed);
std::vector<std::string> ValueNames(bool lastUsed);
std::optional<std::uint32_t> NumberValue(const char* name);
std::optional<std::string> TextValue(const char* name);
std::optional<std::vector<std::uint8_t>> BinaryValue(const char* name, bool lastUsed);
void PutNumber(const char* name, std::uint32_t value);
void PutText(const char* name, const std::string& value);
void PutBinary(const char* name, const void* data, std::size_t size, bool lastUsed);

}  // namespace mv::windowstest
