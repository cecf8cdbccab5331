#include "support/Registry.h"

#include <windows.h>

#include <cstring>

namespace mv::windowstest {

namespace {

constexpr const char* kKey = "SOFTWARE\\Morvenhale\\Photoshop\\RadialBlur";
constexpr const char* kLastUsed = "SOFTWARE\\Morvenhale\\Photoshop\\RadialBlur\\LastUsed";

struct Value {
    DWORD type = 0;
    std::vector<std::uint8_t> data;
};

std::optional<Value> ReadValue(const char* name, bool lastUsed) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, lastUsed ? kLastUsed : kKey, 0, KEY_READ, &key) != 0) {
        return std::nullopt;
    }
    Value value;
    value.data.resize(4096);
    auto size = static_cast<DWORD>(value.data.size());
    const LONG result = RegQueryValueExA(key, name, nullptr, &value.type, value.data.data(), &size);
    RegCloseKey(key);
    if (result != 0) {
        return std::nullopt;
    }
    value.data.resize(size);
    return value;
}

void WriteValue(const char* name, bool lastUsed, DWORD type, const void* data, std::size_t size) {
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, lastUsed ? kLastUsed : kKey, 0, nullptr, 0, KEY_WRITE,
                        nullptr, &key, nullptr) == 0) {
        RegSetValueExA(key, name, 0, type, static_cast<const BYTE*>(data),
                       static_cast<DWORD>(size));
        RegCloseKey(key);
    }
}

}  // namespace

void DeleteSettings() {
    RegDeleteTreeA(HKEY_CURRENT_USER, "SOFTWARE\\Morvenhale");
}

bool KeyExists(bool lastUsed) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, lastUsed ? kLastUsed : kKey, 0, KEY_READ, &key) != 0) {
        return false;
    }
    RegCloseKey(key);
    return true;
}

std::vector<std::string> ValueNames(bool lastUsed) {
    std::vector<std::string> names;
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, lastUsed ? kLastUsed : kKey, 0, KEY_READ, &key) != 0) {
        return names;
    }
    char name[256];
    for (DWORD index = 0;; ++index) {
        DWORD size = sizeof name;
        if (RegEnumValueA(key, index, name, &size, nullptr, nullptr, nullptr, nullptr) != 0) {
            break;
        }
        names.emplace_back(name, size);
    }
    RegCloseKey(key);
    return names;
}

std::optional<std::uint32_t> NumberValue(const char* name) {
    const auto value = ReadValue(name, false);
    if (!value || value->type != REG_DWORD || value->data.size() != 4) {
        return std::nullopt;
    }
    std::uint32_t number = 0;
    std::memcpy(&number, value->data.data(), 4);
    return number;
}

std::optional<std::string> TextValue(const char* name) {
    const auto value = ReadValue(name, false);
    if (!value || value->type != REG_SZ || value->data.empty()) {
        return std::nullopt;
    }
    return std::string(reinterpret_cast<const char*>(value->data.data()), value->data.size() - 1);
}

std::optional<std::vector<std::uint8_t>> BinaryValue(const char* name, bool lastUsed) {
    const auto value = ReadValue(name, lastUsed);
    if (!value || value->type != REG_BINARY) {
        return std::nullopt;
    }
    return value->data;
}

void PutNumber(const char* name, std::uint32_t value) {
    WriteValue(name, false, REG_DWORD, &value, sizeof value);
}

void PutText(const char* name, const std::string& value) {
    WriteValue(name, false, REG_SZ, value.c_str(), value.size() + 1);
}

void PutBinary(const char* name, const void* data, std::size_t size, bool lastUsed) {
    WriteValue(name, lastUsed, REG_BINARY, data, size);
}

}  // namespace mv::windowstest
