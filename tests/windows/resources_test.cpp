// The property list and the terminology that hosts read, byte for byte, as the module ships them.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "Module.h"

namespace mv::windowstest {
namespace {

// A stream as hosts read it: little-endian, codes reversed, nothing aligned.
class Stream {
public:
    void Word(unsigned value) { Number(value, 2); }
    void Long(std::uint32_t value) { Number(value, 4); }
    void Code(const char* text) {
        for (int i = 3; i >= 0; --i) {
            bytes_.push_back(static_cast<std::uint8_t>(text[i]));
        }
    }
    void Text(const std::string& text) { bytes_.insert(bytes_.end(), text.begin(), text.end()); }
    void Pascal(const std::string& text) {
        bytes_.push_back(static_cast<std::uint8_t>(text.size()));
        Text(text);
    }
    void Zeros(std::size_t count) { bytes_.insert(bytes_.end(), count, 0); }
    void Property(const char* key, const Stream& data, std::uint32_t length) {
        Text("MIB8");
        Code(key);
        Long(0);
        Long(length);
        bytes_.insert(bytes_.end(), data.bytes_.begin(), data.bytes_.end());
        Zeros(length - data.bytes_.size());
    }
    const std::vector<std::uint8_t>& Bytes() const { return bytes_; }

private:
    void Number(std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i) {
            bytes_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
    }

    std::vector<std::uint8_t> bytes_;
};

Stream PropertyList() {
    Stream list;
    list.Word(1);
    list.Long(0);
    list.Long(10);
    const auto add = [&list](const char* key, std::uint32_t length, auto fill) {
        Stream data;
        fill(data);
        list.Property(key, data, length);
    };
    add("kind", 4, [](Stream& data) { data.Code("8BFM"); });
    add("name", 20, [](Stream& data) { data.Pascal("MV Radial Blur..."); });
    add("catg", 12, [](Stream& data) { data.Pascal("Morvenhale"); });
    add("vers", 4, [](Stream& data) { data.Long(0x00010002); });
    add("8664", 12, [](Stream& data) { data.Text("ENTRYPOINT"); });
    add("flly", 4, [](Stream& data) { data.Long(0x80); });
    add("mode", 4, [](Stream& data) { data.Long(0x50); });
    add("hstm", 44, [](Stream& data) {
        data.Long(0);
        data.Code("MC01");
        data.Code("null");
        data.Word(16000);
        data.Text("Morvenhale MV Radial Blur");
    });
    add("enbl", 92, [](Stream& data) {
        data.Text(
            "in (PSHOP_ImageMode, GrayScaleMode, RGBMode, Gray16Mode, RGB48Mode, "
            "Gray32Mode, RGB96Mode)");
    });
    add("fici", 28, [](Stream& data) {
        for (int filterCase = 1; filterCase <= 7; ++filterCase) {
            data.Word(filterCase <= 5 ? 0x0101 : 0);
            data.Word(0x000B);
        }
    });
    return list;
}

struct Term {
    const char* name;
    const char* key;
    const char* type;
    const char* description;
};

constexpr Term kTerms[] = {
    {"origin x", "ORIX", "doub", "1.0 is rightmost pixel"},
    {"origin y", "ORIY", "doub", "1.0 is lowest pixel"},
    {"intensity", "INTE", "doub", "image multiplier"},
    {"strength", "STRE", "doub", "effects strength"},
    {"zoom start", "ZOST", "doub", "effect offset"},
    {"holdout radius", "HORA", "doub", "effect starts outside"},
    {"mode", "MODE", "long", "EffectMode (1 or 2)"},
    {"invert gradient", "INGR", "bool", "inverts abberative gradient"},
    {"gamma correction", "GAMA", "bool", "work in linear color space"},
    {"corrective gamma correction", "GAMC", "doub", "takes effect before blending"},
    {"contrast", "CONT", "doub", "takes effect before blending"},
    {"hue", "HSLH", "doub", "takes effect before blending"},
    {"saturation", "HSLS", "doub", "takes effect before blending"},
    {"lightness", "HSLL", "doub", "takes effect before blending"},
    {"extern strength control", "USES", "bool",
     "use extern Selection to control strength per pixel"},
    {"selection low", "SELL", "doub", "lower grayscale selection"},
    {"selection high", "SELH", "doub", "upper grayscale selection"},
    {"selection soften", "SELS", "doub", "Selection Soften based on Climax"},
    {"selection climax", "SELC", "doub", "Peak intensity when softened"},
    {"blend mode", "BLND", "long", "transfer mode"},
    {"show mode", "SHOW", "long", "what to see"}};

Stream Terminology() {
    Stream terms;
    for (const unsigned value : {1u, 1u, 0u, 0u, 1u}) {
        terms.Word(value);
    }
    terms.Pascal("Morvenhale");
    terms.Pascal("Vandrel package");
    terms.Code("MS01");
    for (const unsigned value : {1u, 1u, 1u}) {
        terms.Word(value);
    }
    terms.Pascal("MV Radial Blur");
    terms.Pascal("no comment");
    terms.Code("MC01");
    terms.Code("null");
    terms.Code("null");
    terms.Pascal("");
    terms.Word(0);
    terms.Code("#ImR");
    terms.Pascal("");
    terms.Word(0xB000);
    terms.Word(21);
    for (const Term& term : kTerms) {
        terms.Pascal(term.name);
        terms.Code(term.key);
        terms.Code(term.type);
        terms.Pascal(term.description);
        terms.Word(0);
    }
    terms.Zeros(6);
    return terms;
}

std::vector<std::uint8_t> ReadResource(const char* type, WORD id) {
    const HMODULE module =
        LoadLibraryExW(host::DefaultModulePath().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    if (module == nullptr) {
        ADD_FAILURE() << "the module beside the test cannot be read";
        return {};
    }
    std::vector<std::uint8_t> bytes;
    const HRSRC found = FindResourceA(module, MAKEINTRESOURCEA(id), type);
    if (found != nullptr) {
        const auto* data =
            static_cast<const std::uint8_t*>(LockResource(LoadResource(module, found)));
        bytes.assign(data, data + SizeofResource(module, found));
    }
    FreeLibrary(module);
    return bytes;
}

TEST(Resources, HoldTheStatedPropertyList) {
    const Stream expected = PropertyList();
    EXPECT_EQ(expected.Bytes().size(), 394u);
    EXPECT_EQ(ReadResource("PIPL", 16000), expected.Bytes());
}

TEST(Resources, HoldTheStatedTerminology) {
    const Stream expected = Terminology();
    EXPECT_EQ(expected.Bytes().size(), 1108u);
    EXPECT_EQ(ReadResource("AETE", 16000), expected.Bytes());
}

TEST(Resources, StateTheVersion) {
    const std::vector<std::uint8_t> version =
        ReadResource(reinterpret_cast<const char*>(MAKEINTRESOURCEA(16)), 1);
    const auto hasText = [&version](const std::u16string& text) {
        const auto* first = reinterpret_cast<const std::uint8_t*>(text.data());
        return std::search(version.begin(), version.end(), first, first + text.size() * 2) !=
               version.end();
    };
    EXPECT_TRUE(hasText(u"1.2.6"));
    EXPECT_TRUE(hasText(u"Morvenhale"));
    // The fixed information starts behind the block's name: 1.2 above 6.0.
    const std::uint8_t fixed[] = {2, 0, 1, 0, 0, 0, 6, 0};
    EXPECT_NE(std::search(version.begin(), version.end(), fixed, fixed + 8), version.end());
}

}  // namespace
}  // namespace mv::windowstest
