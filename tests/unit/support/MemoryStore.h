// A key-value store in memory, whose contents a test sets and looks at.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/KeyValueStore.h"

namespace mv {

class MemoryStore final : public KeyValueStore {
public:
    bool Read(const char* name, void* data, std::uint32_t capacity,
              std::uint32_t& length) noexcept override {
        const auto found = values.find(name);
        if (found == values.end() || found->second.size() > capacity) {
            return false;
        }
        std::memcpy(data, found->second.data(), found->second.size());
        length = static_cast<std::uint32_t>(found->second.size());
        return true;
    }

    bool Write(const char* name, ValueKind kind, const void* data,
               std::uint32_t length) noexcept override {
        const auto* bytes = static_cast<const std::uint8_t*>(data);
        values[name].assign(bytes, bytes + length);
        allBinary = allBinary && kind == ValueKind::Binary;
        return true;
    }

    template <class Value>
    void Put(const char* name, Value value) {
        Write(name, ValueKind::Binary, &value, sizeof value);
    }

    void PutText(const char* name, std::string_view text) {
        values[name].assign(text.begin(), text.end());
    }

    template <class Value>
    Value Get(const char* name) {
        Value value{};
        EXPECT_EQ(values[name].size(), sizeof value) << name;
        std::memcpy(&value, values[name].data(), sizeof value);
        return value;
    }

    std::map<std::string, std::vector<std::uint8_t>> values;
    bool allBinary = true;
};

}  // namespace mv
