#include "support/ModuleFile.h"

#include <tuple>

namespace mv::host::test {
namespace {

constexpr std::uint32_t kAddress = 0x1000;    // of the one section, in memory
constexpr std::uint32_t kFileOffset = 0x200;  // and in the file
constexpr std::uint32_t kHeader = 0x40;

void Append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes Number(std::uint64_t value, int size) {
    Bytes bytes;
    for (int i = 0; i < size; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
    return bytes;
}

void Append16(Bytes& bytes, std::uint64_t value) {
    Append(bytes, Number(value, 2));
}

void Append32(Bytes& bytes, std::uint64_t value) {
    Append(bytes, Number(value, 4));
}

void Put32(Bytes& bytes, std::size_t at, std::uint64_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

void Align(Bytes& bytes, std::size_t size) {
    while (bytes.size() % size != 0) {
        bytes.push_back(0);
    }
}

Bytes Letters(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

Bytes ZeroText(const std::string& text) {
    Bytes bytes = Letters(text);
    bytes.push_back(0);
    return bytes;
}

Bytes WideText(const std::string& text) {
    Bytes bytes;
    for (const char letter : text) {
        Append16(bytes, static_cast<unsigned char>(letter));
    }
    return bytes;
}

// The section's bytes; places in it are given as addresses in memory.
struct Section {
    Bytes bytes;

    std::uint32_t Here() const { return kAddress + static_cast<std::uint32_t>(bytes.size()); }
    std::uint32_t Add(const Bytes& more) {
        Align(bytes, 4);
        const std::uint32_t here = Here();
        Append(bytes, more);
        return here;
    }
};

std::uint32_t AddExports(Section& section, const std::vector<std::string>& names) {
    Bytes table;
    for (const std::string& name : names) {
        Append32(table, section.Add(ZeroText(name)));
    }
    const std::uint32_t tableAddress = section.Add(table);
    Bytes directory(40, 0);
    Put32(directory, 24, names.size());
    Put32(directory, 32, tableAddress);
    return section.Add(directory);
}

std::uint32_t AddImports(Section& section, const std::vector<std::string>& names) {
    Bytes table;
    for (const std::string& name : names) {
        Bytes entry(20, 0);
        Put32(entry, 12, section.Add(ZeroText(name)));
        Append(table, entry);
    }
    Append(table, Bytes(20, 0));
    return section.Add(table);
}

// Three levels: a table of types, and for each type a table of one name and one of one language.
std::uint32_t AddResources(Section& section, const std::vector<ModuleResource>& resources) {
    constexpr std::uint32_t kTable = 16;
    constexpr std::uint32_t kEntry = 8;
    constexpr std::uint32_t kHigh = 0x80000000;
    constexpr std::uint32_t kPerType = 2 * (kTable + kEntry) + 16;
    const auto count = static_cast<std::uint32_t>(resources.size());
    std::vector<std::uint32_t> data;
    for (const ModuleResource& resource : resources) {
        data.push_back(section.Add(resource.data));
    }
    Bytes tree(12, 0);
    Append16(tree, 0);
    Append16(tree, count);
    const std::uint32_t firstType = kTable + count * kEntry;
    std::uint32_t text = firstType + count * kPerType;
    Bytes texts;
    for (std::uint32_t i = 0; i < count; ++i) {
        const ModuleResource& resource = resources[i];
        Append32(tree, resource.type.empty() ? resource.number : kHigh | text);
        Append32(tree, kHigh | (firstType + i * kPerType));
        if (!resource.type.empty()) {
            Append16(texts, resource.type.size());
            Append(texts, WideText(resource.type));
            text = firstType + count * kPerType + static_cast<std::uint32_t>(texts.size());
        }
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t here = firstType + i * kPerType;
        for (const std::uint32_t target : {kHigh | (here + kTable + kEntry),  //
                                           here + 2 * (kTable + kEntry)}) {
            Append(tree, Bytes(12, 0));
            Append16(tree, 0);
            Append16(tree, 1);
            Append32(tree, 16000);
            Append32(tree, target);
        }
        Append32(tree, data[i]);
        Append32(tree, resources[i].data.size());
        Append(tree, Bytes(8, 0));
    }
    Append(tree, texts);
    return section.Add(tree);
}

// As the format's text has it: words are added, and what overflows is added again.
std::uint32_t Sum(const Bytes& file) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i + 1 < file.size(); i += 2) {
        sum += static_cast<std::uint32_t>(file[i]) + static_cast<std::uint32_t>(file[i + 1]) * 256;
        sum = (sum & 0xFFFF) + sum / 65536;
    }
    return sum + static_cast<std::uint32_t>(file.size());
}

Bytes VersionText(const std::string& name, const std::string& text) {
    Bytes body = Number(0, 2);
    Append16(body, text.size() + 1);
    Append16(body, 1);
    Append(body, WideText(name));
    Append16(body, 0);
    Align(body, 4);
    Append(body, WideText(text));
    Append16(body, 0);
    body[0] = static_cast<std::uint8_t>(body.size());
    Align(body, 4);
    return body;
}

// A block whose name is followed by a value and blocks.
Bytes VersionBlock(const std::string& name, const Bytes& value, const Bytes& inside) {
    Bytes body = Number(0, 2);
    Append16(body, value.size());
    Append16(body, 0);
    Append(body, WideText(name));
    Append16(body, 0);
    Align(body, 4);
    Append(body, value);
    Append(body, inside);
    body[0] = static_cast<std::uint8_t>(body.size());
    body[1] = static_cast<std::uint8_t>(body.size() >> 8);
    return body;
}

}  // namespace

Bytes Reversed(const std::string& code) {
    return Bytes(code.rbegin(), code.rend());
}

Bytes Pascal(const std::string& text) {
    Bytes bytes = {static_cast<std::uint8_t>(text.size())};
    Append(bytes, Letters(text));
    return bytes;
}

Bytes PropertyListBytes(const std::vector<Property>& properties) {
    Bytes bytes = Number(1, 2);
    Append32(bytes, 0);
    Append32(bytes, properties.size());
    for (const Property& property : properties) {
        Append(bytes, Reversed("8BIM"));
        Append(bytes, Reversed(property.key));
        Append32(bytes, 0);
        Append32(bytes, property.value.size());
        Append(bytes, property.value);
        bytes.insert(bytes.end(), (4 - property.value.size() % 4) % 4, 0);
    }
    return bytes;
}

std::vector<Property> SoundProperties() {
    return {{"kind", Reversed("8BFM")},         {"name", Pascal("Test Blur...")},
            {"catg", Pascal("Makers")},         {"vers", Number(0x00020003, 4)},
            {"8664", ZeroText("ENTRYPOINT")},   {"mode", {0x50, 0, 0, 0}},
            {"fici", {1, 1, 0, 0, 0, 0, 0, 0}}, {"enbl", ZeroText("in (x)")}};
}

Bytes TerminologyBytes() {
    Bytes bytes;
    for (const unsigned word : {1U, 1U, 0U, 0U, 1U}) {
        Append16(bytes, word);
    }
    Append(bytes, Pascal("Suite"));
    Append(bytes, Pascal(""));
    Append(bytes, Reversed("SU01"));
    Append16(bytes, 1);
    Append16(bytes, 1);
    Append16(bytes, 1);
    Append(bytes, Pascal("Event"));
    Append(bytes, Pascal("no comment"));
    for (const char* code : {"CL01", "null", "null"}) {
        Append(bytes, Reversed(code));
    }
    Append(bytes, Pascal(""));
    Append16(bytes, 0);
    Append(bytes, Reversed("#ImR"));
    Append(bytes, Pascal(""));
    Append16(bytes, 0xB000);
    Append16(bytes, 2);
    for (const auto& [name, key, type] :
         {std::tuple{"length", "LENG", "doub"}, std::tuple{"kind", "KIND", "long"}}) {
        Append(bytes, Pascal(name));
        Append(bytes, Reversed(key));
        Append(bytes, Reversed(type));
        Append(bytes, Pascal("said of it"));
        Append16(bytes, 0);
    }
    return bytes;
}

Bytes VersionBytes() {
    Bytes fixed = Number(0xFEEF04BD, 4);
    Append32(fixed, 0x00010000);
    Append32(fixed, 0x00030001);  // 3.1
    Append32(fixed, 0x00040001);  // 4.1
    fixed.resize(52, 0);
    Bytes texts = VersionText("CompanyName", "Makers");
    Append(texts, VersionText("FileDescription", "A test"));
    const Bytes table = VersionBlock("040904B0", {}, texts);
    return VersionBlock("VS_VERSION_INFO", fixed, VersionBlock("StringFileInfo", {}, table));
}

ModuleFile::ModuleFile()
    : resources{{"PIPL", 0, PropertyListBytes(SoundProperties())},
                {"AETE", 0, TerminologyBytes()},
                {"", 16, VersionBytes()}} {}

Bytes ModuleFile::Build() const {
    Section section;
    const std::uint32_t exportsAt = AddExports(section, exports);
    const std::uint32_t importsAt = AddImports(section, imports);
    const std::uint32_t resourcesAt = AddResources(section, resources);
    Align(section.bytes, 512);

    Bytes file(kHeader, 0);
    file[0] = 'M';
    file[1] = 'Z';
    Put32(file, 0x3C, kHeader);
    Append(file, {'P', 'E', 0, 0});
    Append16(file, machine);
    Append16(file, 1);  // section
    Append(file, Bytes(12, 0));
    Append16(file, wide ? 240 : 224);
    Append16(file, flags);
    const std::size_t optional = file.size();
    Append16(file, wide ? 0x020B : 0x010B);
    file.resize(optional + 70, 0);
    Append16(file, protections);
    file.resize(optional + (wide ? 108 : 92), 0);
    Append32(file, 16);  // directories
    const std::size_t directories = file.size();
    file.resize(directories + 16 * 8, 0);
    const auto direct = [&](std::size_t index, std::uint32_t address, std::uint64_t size) {
        Put32(file, directories + index * 8, address);
        Put32(file, directories + index * 8 + 4, size);
    };
    direct(0, exportsAt, exports.empty() ? 0 : 40);
    direct(1, importsAt, 20 * (imports.size() + 1));
    direct(2, resourcesAt, resources.empty() ? 0 : 16);
    Append(file, Letters(".all"));
    Append32(file, 0);
    for (const std::uint64_t value : {section.bytes.size(), std::size_t{kAddress},
                                      section.bytes.size(), std::size_t{kFileOffset}}) {
        Append32(file, value);
    }
    file.resize(kFileOffset, 0);
    Append(file, section.bytes);
    if (!signature.empty()) {
        direct(4, static_cast<std::uint32_t>(file.size()), signature.size());
        Append(file, signature);
    }
    if (summed) {
        Put32(file, optional + 64, Sum(file));
    }
    return file;
}

}  // namespace mv::host::test
