#include "doctor/PropertyList.h"

#include <algorithm>
#include <iterator>

namespace mv::host {
namespace {

constexpr std::uint32_t Code(const char (&letters)[5]) {
    std::uint32_t code = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        code = code << 8 | static_cast<unsigned char>(letters[i]);
    }
    return code;
}

constexpr std::uint32_t kVendor = Code("8BIM");

// In the order of the flags, from the highest bit of the first byte on.
constexpr const char* kModes[] = {
    "bitmap",       "gray scale",  "indexed colour", "RGB",     "CMYK",
    "HSL",          "HSB",         "multichannel",   "duotone", "Lab",
    "gray, 16 bit", "RGB, 16 bit", "Lab, 16 bit"};

constexpr const char* kCases[] = {"flat image, no selection",
                                  "flat image, with selection",
                                  "floating selection",
                                  "editable transparency, no selection",
                                  "editable transparency, with selection",
                                  "protected transparency, no selection",
                                  "protected transparency, with selection"};

std::string PascalText(const ByteView& data, std::uint64_t offset) {
    const std::size_t length = data.U8(offset).value_or(0);
    return length == 0 ? std::string() : Printable(data.From(offset + 1).Text(0, length));
}

void ReadModes(const ByteView& data, PropertyList& list) {
    for (std::size_t i = 0; i < std::size(kModes); ++i) {
        if ((data.U8(i / 8).value_or(0) >> (7 - i % 8) & 1) != 0) {
            list.modes.emplace_back(kModes[i]);
        }
    }
}

void ReadCases(const ByteView& data, PropertyList& list) {
    for (std::size_t i = 0; i < std::size(kCases); ++i) {
        const auto input = data.U8(i * 4);
        const auto output = data.U8(i * 4 + 1);
        if (!input || !output) {
            return;
        }
        std::string words = "handled in way " + std::to_string(*input);
        if (*input == 0 || *output == 0) {
            words = "refused";
        } else if (*input == 1) {
            words = "taken as it is";
        }
        list.cases.push_back(std::string(kCases[i]) + ": " + words);
    }
}

void ReadTerminology(const ByteView& data, PropertyList& list) {
    const auto classCode = data.U32(4);
    const auto event = data.U32(8);
    const auto resource = data.U16(12);
    if (classCode && event && resource) {
        list.terminology = "class " + CodeText(*classCode) + ", event " + CodeText(*event) +
                           ", resource " + std::to_string(*resource) + ", scope '" +
                           Printable(data.Text(14)) + "'";
    }
}

void ReadProperty(std::uint32_t key, const ByteView& data, PropertyList& list) {
    const std::uint32_t number = data.U32(0).value_or(0);
    switch (key) {
        case Code("kind"):
            list.kind = CodeText(number);
            break;
        case Code("name"):
            list.name = PascalText(data, 0);
            break;
        case Code("catg"):
            list.category = PascalText(data, 0);
            break;
        case Code("vers"):
            list.version = std::to_string(number >> 16) + "." + std::to_string(number & 0xFFFF);
            break;
        case Code("8664"):
            list.entryPoint64 = Printable(data.Text(0));
            break;
        case Code("wx86"):
            list.entryPoint32 = Printable(data.Text(0));
            break;
        case Code("mode"):
            ReadModes(data, list);
            break;
        case Code("flly"):
            list.layerSupport = (data.U8(0).value_or(0) & 0x80) != 0 ? "as a smart filter too"
                                                                     : "plain layers only";
            break;
        case Code("hstm"):
            ReadTerminology(data, list);
            break;
        case Code("enbl"):
            list.enableRule = Printable(data.Text(0));
            break;
        case Code("fici"):
            ReadCases(data, list);
            break;
        default:
            list.strange.push_back(CodeText(key));
            break;
    }
}

}  // namespace

PropertyList ReadPropertyList(ByteView data) {
    constexpr std::uint32_t kMostProperties = 1000;
    constexpr std::uint64_t kHeaderSize = 10;    // a leading word, a version, a count
    constexpr std::uint64_t kPropertySize = 16;  // vendor, key, id, length
    PropertyList list;
    list.promised = data.U32(6).value_or(0);
    std::uint64_t at = kHeaderSize;
    while (list.found < std::min(list.promised, kMostProperties)) {
        const auto vendor = data.U32(at);
        const auto key = data.U32(at + 4);
        const auto length = data.U32(at + 12);
        if (!vendor || !key || !length) {
            break;
        }
        const auto value = data.Part(at + kPropertySize, *length);
        if (!value) {
            break;
        }
        if (*vendor == kVendor) {
            ReadProperty(*key, *value, list);
        } else {
            list.strange.push_back(CodeText(*vendor) + " " + CodeText(*key));
        }
        ++list.found;
        at += kPropertySize + (std::uint64_t{*length} + 3) / 4 * 4;
    }
    return list;
}

std::string KindWords(const std::string& kind) {
    struct Word {
        const char* kind;
        const char* words;
    };
    static constexpr Word kWords[] = {
        {"8BFM", "a filter"},           {"8BIF", "a file format"},
        {"8BAM", "an import module"},   {"8BEM", "an export module"},
        {"8BSM", "a selection module"}, {"8BCM", "a colour picker"},
        {"8BXM", "an extension"},       {"8LIZ", "an automation module"},
    };
    for (const Word& word : kWords) {
        if (kind == word.kind) {
            return word.words;
        }
    }
    return "a module of the kind '" + kind + "'";
}

}  // namespace mv::host
