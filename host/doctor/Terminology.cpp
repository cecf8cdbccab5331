#include "doctor/Terminology.h"

namespace mv::host {
namespace {

// Reads one thing after the other; once something is missing, all that follows is empty.
class Stream {
public:
    explicit Stream(ByteView data) : data_(data) {}

    std::uint16_t Word() {
        const auto value = data_.U16(at_);
        Step(2, value.has_value());
        return value.value_or(0);
    }
    std::string Code() {
        const auto value = data_.U32(at_);
        Step(4, value.has_value());
        return CodeText(value.value_or(0));
    }
    std::string Text() {
        const std::uint64_t length = data_.U8(at_).value_or(0);
        const auto letters = data_.Part(at_ + 1, length);
        Step(1 + length, letters.has_value());
        return letters ? Printable(letters->Text(0)) : std::string();
    }
    bool Sound() const { return sound_; }

private:
    void Step(std::uint64_t size, bool there) {
        at_ += size;
        sound_ = sound_ && there;
    }

    ByteView data_;
    std::uint64_t at_ = 0;
    bool sound_ = true;
};

std::string TypeWords(const std::string& type) {
    return type == "doub"   ? "number"
           : type == "bool" ? "on or off"
           : type == "long" ? "whole number"
                            : type;
}

}  // namespace

Terminology ReadTerminology(ByteView data) {
    Terminology result;
    Stream stream(data);
    for (int i = 0; i < 3; ++i) {
        stream.Word();  // versions, language, script
    }
    stream.Word();
    const std::uint16_t suites = stream.Word();
    result.suite = stream.Text();
    stream.Text();
    stream.Code();
    stream.Word();
    stream.Word();
    const std::uint16_t events = stream.Word();
    result.event = stream.Text();
    stream.Text();
    result.eventClass = stream.Code();
    stream.Code();
    stream.Code();  // of the reply, whose text and flags follow
    stream.Text();
    stream.Word();
    stream.Code();  // of the direct parameter
    stream.Text();
    stream.Word();
    const std::uint16_t count = stream.Word();
    for (std::uint16_t i = 0; i < count && stream.Sound(); ++i) {
        std::string name = stream.Text();
        const std::string key = stream.Code();
        const std::string type = stream.Code();
        stream.Text();
        stream.Word();
        if (stream.Sound()) {
            result.parameters.push_back(name + " (" + key + ", " + TypeWords(type) + ")");
        }
    }
    result.whole = stream.Sound() && suites > 0 && events > 0;
    return result;
}

namespace {

std::uint64_t Aligned(std::uint64_t offset) {
    return (offset + 3) / 4 * 4;
}

// Letters of 16 bits up to a zero.
std::string WideText(const ByteView& data, std::uint64_t offset, std::size_t longest) {
    std::string text;
    for (std::size_t i = 0; i < longest; ++i) {
        const std::uint16_t letter = data.U16(offset + i * 2).value_or(0);
        if (letter == 0) {
            break;
        }
        text += letter < 0x80 ? static_cast<char>(letter) : '?';
    }
    return Printable(text);
}

// A block: its length, that of its value, a type, a name, the value, and blocks inside of it.
struct Block {
    ByteView data;
    std::string name;
    std::uint64_t value = 0;
    std::uint64_t valueLength = 0;  // in bytes, or in letters for a text

    explicit Block(ByteView source) {
        constexpr std::size_t kLongestName = 64;
        data = source.Part(0, std::min<std::uint64_t>(source.U16(0).value_or(0), source.Size()))
                   .value_or(ByteView());
        name = WideText(data, 6, kLongestName);
        value = Aligned(6 + (name.size() + 1) * 2);
        valueLength = data.U16(2).value_or(0);
    }

    // Calls `function` with each block that lies behind an offset.
    template <class Function>
    void Each(std::uint64_t offset, const Function& function) const {
        constexpr std::uint64_t kSmallest = 6;
        while (data.Holds(offset, kSmallest)) {
            const Block inner(data.From(offset));
            if (inner.data.Size() < kSmallest) {
                return;
            }
            function(inner);
            offset = Aligned(offset + inner.data.Size());
        }
    }
};

}  // namespace

VersionInfo ReadVersionInfo(ByteView data) {
    constexpr std::uint32_t kFixedSignature = 0xFEEF04BD;
    constexpr std::size_t kMostTexts = 64;
    constexpr std::size_t kLongestText = 200;
    VersionInfo result;
    const Block root(data);
    if (root.data.U32(root.value) == kFixedSignature) {
        const std::uint32_t high = root.data.U32(root.value + 8).value_or(0);
        const std::uint32_t low = root.data.U32(root.value + 12).value_or(0);
        result.fileVersion = std::to_string(high >> 16) + "." + std::to_string(high & 0xFFFF) +
                             "." + std::to_string(low >> 16) + "." + std::to_string(low & 0xFFFF);
    }
    root.Each(Aligned(root.value + root.valueLength), [&](const Block& info) {
        if (info.name != "StringFileInfo") {
            return;
        }
        info.Each(info.value, [&](const Block& table) {
            table.Each(table.value, [&](const Block& entry) {
                if (result.texts.size() < kMostTexts) {
                    result.texts.emplace_back(entry.name,
                                              WideText(entry.data, entry.value, kLongestText));
                }
            });
        });
    });
    return result;
}

std::string VersionInfo::Text(const std::string& name) const {
    for (const auto& [key, text] : texts) {
        if (key == name) {
            return text;
        }
    }
    return {};
}

}  // namespace mv::host
