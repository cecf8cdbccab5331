#include "program/Json.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace mv::host {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// The length of the well-formed UTF-8 sequence at the start of `text`, or 0.
std::size_t SequenceLength(std::string_view text) {
    const auto byte = [text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const auto follows = [&byte](std::size_t i, unsigned low = 0x80, unsigned high = 0xBF) {
        return byte(i) >= low && byte(i) <= high;
    };
    const unsigned first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first <= 0xDF) {
        return follows(1) ? 2 : 0;
    }
    if (first >= 0xE0 && first <= 0xEF) {
        const unsigned low = first == 0xE0 ? 0xA0 : 0x80;
        const unsigned high = first == 0xED ? 0x9F : 0xBF;
        return follows(1, low, high) && follows(2) ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const unsigned low = first == 0xF0 ? 0x90 : 0x80;
        const unsigned high = first == 0xF4 ? 0x8F : 0xBF;
        return follows(1, low, high) && follows(2) && follows(3) ? 4 : 0;
    }
    return 0;
}

void AppendControl(std::string& text, char character) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(character);
    text += "\\u00";
    text += digits[value >> 4];
    text += digits[value & 15];
}

}  // namespace

void JsonWriter::Separate() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (filled_.empty()) {
        return;
    }
    text_ += filled_.back() ? ",\n" : "\n";
    filled_.back() = true;
    text_.append(filled_.size() * 2, ' ');
}

void JsonWriter::Begin(char bracket) {
    Separate();
    text_ += bracket;
    filled_.push_back(false);
}

void JsonWriter::End(char bracket) {
    const bool wasFilled = filled_.back();
    filled_.pop_back();
    if (wasFilled) {
        text_ += '\n';
        text_.append(filled_.size() * 2, ' ');
    }
    text_ += bracket;
}

JsonWriter& JsonWriter::BeginObject() {
    Begin('{');
    return *this;
}

JsonWriter& JsonWriter::EndObject() {
    End('}');
    return *this;
}

JsonWriter& JsonWriter::BeginArray() {
    Begin('[');
    return *this;
}

JsonWriter& JsonWriter::EndArray() {
    End(']');
    return *this;
}

JsonWriter& JsonWriter::Key(std::string_view name) {
    Text(name);
    text_ += ": ";
    afterKey_ = true;
    return *this;
}

JsonWriter& JsonWriter::Text(std::string_view text) {
    Separate();
    text_ += '"';
    while (!text.empty()) {
        const char character = text.front();
        const std::size_t length = SequenceLength(text);
        if (character == '"' || character == '\\') {
            text_ += '\\';
            text_ += character;
        } else if (static_cast<unsigned char>(character) < 0x20) {
            AppendControl(text_, character);
        } else if (length == 0) {
            text_ += kReplacement;
        } else {
            text_ += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    text_ += '"';
    return *this;
}

JsonWriter& JsonWriter::Number(double value) {
    Separate();
    if (!std::isfinite(value)) {
        text_ += "null";
        return *this;
    }
    std::array<char, 32> buffer;
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    text_.append(buffer.data(), end);
    return *this;
}

JsonWriter& JsonWriter::Integer(std::int64_t value) {
    Separate();
    text_ += std::to_string(value);
    return *this;
}

JsonWriter& JsonWriter::Boolean(bool value) {
    Separate();
    text_ += value ? "true" : "false";
    return *this;
}

std::string JsonWriter::Take() {
    text_ += '\n';
    return std::move(text_);
}

}  // namespace mv::host
