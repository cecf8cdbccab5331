// A fuzz target's input as a stream of values. It never ends: past the last byte come zeros.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace fuzzing {

// Points into bytes that stay the caller's. Used on one thread.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : next_(data), left_(size) {}

    std::size_t Left() const { return left_; }

    std::uint8_t Byte() {
        if (left_ == 0) {
            return 0;
        }
        --left_;
        return *next_++;
    }

    template <class Value>
    Value Raw() {
        std::uint8_t bytes[sizeof(Value)];
        for (std::uint8_t& byte : bytes) {
            byte = Byte();
        }
        Value value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }

    bool Flag() { return (Byte() & 1) != 0; }
    // One in so many is true; never at the end of the input.
    bool Rarely(int oneIn) { return Byte() % oneIn == 1; }
    int Below(int bound) { return Byte() % bound; }

    // Mostly values of a usual size, but also those that are none or do not end.
    double Number() {
        static constexpr double kOdd[] = {0.0,  -0.0,  1.0,          -1.0,          0.5,   -0.5,
                                          2.0,  255.0, 1e9,          -1e9,          1e-30, 1e18,
                                          1e30, -1e30, 2147483648.0, -2147483649.0, 1e300, -1e300};
        const int kind = Below(8);
        if (kind < 4) {
            return Raw<std::int16_t>() / 8192.0;
        }
        if (kind < 6) {
            return kOdd[static_cast<std::size_t>(Below(18))];
        }
        if (kind == 6) {
            static constexpr double kLimits[] = {
                std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::denorm_min(),
                std::numeric_limits<double>::max()};
            return kLimits[static_cast<std::size_t>(Below(5))];
        }
        return Raw<double>();
    }

    std::string Text(std::size_t length) {
        const std::size_t taken = length < left_ ? length : left_;
        std::string text(reinterpret_cast<const char*>(next_), taken);
        next_ += taken;
        left_ -= taken;
        return text;
    }
    std::string Rest() { return Text(left_); }

private:
    const std::uint8_t* next_;
    std::size_t left_;
};

}  // namespace fuzzing
