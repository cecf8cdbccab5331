#pragma once

#include <cstdint>
#include <memory>

namespace mv {

// What a value is, for stores that keep track of it.
enum class ValueKind { Text, Binary, Number };

// One folder of named values that belong to the user: a registry key on Windows, and nothing at
// all elsewhere. Owned by whoever opened it, for the length of one pass; one thread. Every
// operation may fail, and a failure changes nothing.
class KeyValueStore {
public:
    virtual ~KeyValueStore() = default;

    // Reads a value of at most capacity bytes and tells its length. A longer one is a failure.
    virtual bool Read(const char* name, void* data, std::uint32_t capacity,
                      std::uint32_t& length) noexcept = 0;
    virtual bool Write(const char* name, ValueKind kind, const void* data,
                       std::uint32_t length) noexcept = 0;

    // A value that has exactly the size of the object; otherwise the object stays.
    template <class Value>
    bool ReadExactly(const char* name, Value& value) noexcept {
        Value read{};
        std::uint32_t length = 0;
        if (!Read(name, &read, sizeof read, length) || length != sizeof read) {
            return false;
        }
        value = read;
        return true;
    }
};

// Null when the folder does not exist or cannot be opened for reading.
std::unique_ptr<KeyValueStore> OpenKeyValueStore(const char* path) noexcept;
// Makes the folder where it is missing and opens it for writing; null when that fails.
std::unique_ptr<KeyValueStore> CreateKeyValueStore(const char* path) noexcept;

}  // namespace mv
