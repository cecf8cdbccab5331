// What the tests of parameters watch them with.
#pragma once

#include <cstdint>

#include "parameters/pfParameter.h"
#include "parameters/pfParameterUI.h"

namespace mv::test {

// A control that counts how often it is told to show the value.
class CountingControl : public pfParameterUI {
public:
    void Refresh() override { ++refreshes; }
    int refreshes = 0;
};

// A change callback that counts.
struct CallCounter {
    static void Count(pfParameter* parameter, void* data) {
        auto* const counter = static_cast<CallCounter*>(data);
        ++counter->calls;
        counter->last = parameter;
    }
    void WatchOver(pfParameter& parameter) { parameter.SetChangeCallback(&Count, this); }

    int calls = 0;
    pfParameter* last = nullptr;
};

// The random generator a second time, so that a test knows the draws to come.
class PlainRandom {
public:
    explicit PlainRandom(std::uint32_t seed) : state_(seed) {}
    int Next() {
        state_ = state_ * 214013u + 2531011u;
        return static_cast<int>((state_ >> 16) & 0x7fffu);
    }
    double NextScaled() { return Next() * (1.0 / 32767.0); }

private:
    std::uint32_t state_;
};

}  // namespace mv::test
