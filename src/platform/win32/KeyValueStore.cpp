#include "platform/KeyValueStore.h"

#include <windows.h>

#include <new>

namespace mv {

namespace {

class RegistryKey final : public KeyValueStore {
public:
    explicit RegistryKey(HKEY key) noexcept : key_(key) {}
    ~RegistryKey() override { RegCloseKey(key_); }
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    bool Read(const char* name, void* data, std::uint32_t capacity,
              std::uint32_t& length) noexcept override {
        DWORD size = capacity;
        if (RegQueryValueExA(key_, name, nullptr, nullptr, static_cast<BYTE*>(data), &size) !=
            ERROR_SUCCESS) {
            return false;
        }
        length = size;
        return true;
    }

    bool Write(const char* name, ValueKind kind, const void* data,
               std::uint32_t length) noexcept override {
        return RegSetValueExA(key_, name, 0, TypeOf(kind), static_cast<const BYTE*>(data),
                              length) == ERROR_SUCCESS;
    }

private:
    static DWORD TypeOf(ValueKind kind) noexcept {
        switch (kind) {
            case ValueKind::Text:
                return REG_SZ;
            case ValueKind::Number:
                return REG_DWORD;
            case ValueKind::Binary:
                break;
        }
        return REG_BINARY;
    }

    HKEY key_;
};

std::unique_ptr<KeyValueStore> Wrap(HKEY key) noexcept {
    std::unique_ptr<KeyValueStore> store(new (std::nothrow) RegistryKey(key));
    if (!store) {
        RegCloseKey(key);
    }
    return store;
}

}  // namespace

std::unique_ptr<KeyValueStore> OpenKeyValueStore(const char* path) noexcept {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, path, 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return nullptr;
    }
    return Wrap(key);
}

std::unique_ptr<KeyValueStore> CreateKeyValueStore(const char* path) noexcept {
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, path, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE,
                        nullptr, &key, nullptr) != ERROR_SUCCESS) {
        return nullptr;
    }
    return Wrap(key);
}

}  // namespace mv
