#include "doctor/ElfImage.h"

#include <algorithm>

namespace mv::host {
namespace {

constexpr std::uint32_t kSignature = 0x464C457F;
constexpr std::uint32_t kSymbolTable = 11;  // the one for the dynamic linker
constexpr std::uint32_t kDynamicTable = 6;
constexpr std::uint32_t kTypeWithoutData = 8;
constexpr std::uint64_t kNeeded = 1;
constexpr std::uint64_t kMostEntries = 65536;

struct Section {
    std::uint32_t type = 0;
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::uint32_t link = 0;
};

Section SectionAt(const ByteView& file, std::uint64_t at) {
    return {file.U32(at + 4).value_or(0), file.U64(at + 24).value_or(0),
            file.U64(at + 32).value_or(0), file.U32(at + 40).value_or(0)};
}

ByteView DataOf(const ByteView& file, const Section& section) {
    return file.Part(section.offset, section.size).value_or(ByteView());
}

// Takes what it looks at from the budget that all tables of a file share.
bool DefinesEntryPoint(const ByteView& symbols, const ByteView& texts, std::uint64_t& budget) {
    constexpr std::uint64_t kSymbolSize = 24;
    const std::uint64_t count = std::min(symbols.Size() / kSymbolSize, budget);
    budget -= count;
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::uint64_t at = i * kSymbolSize;
        const bool defined = symbols.U16(at + 6).value_or(0) != 0;
        if (defined && texts.Text(symbols.U32(at).value_or(0)) == "ENTRYPOINT") {
            return true;
        }
    }
    return false;
}

void ReadLibraries(const ByteView& entries, const ByteView& texts, ElfImage& image) {
    constexpr std::uint64_t kEntrySize = 16;
    constexpr std::size_t kMostLibraries = 256;
    const std::uint64_t count = std::min(entries.Size() / kEntrySize, kMostEntries);
    for (std::uint64_t i = 0; i < count && image.libraries.size() < kMostLibraries; ++i) {
        if (entries.U64(i * kEntrySize) == kNeeded) {
            image.libraries.push_back(
                Printable(texts.Text(entries.U64(i * kEntrySize + 8).value_or(0))));
        }
    }
}

}  // namespace

bool ReadElfImage(ByteView file, ElfImage& image) {
    constexpr std::uint64_t kSectionSize = 64;
    if (file.U32(0) != kSignature) {
        return false;
    }
    image.is64Bit = file.U8(4) == 2;
    image.littleEndian = file.U8(5) == 1;
    image.type = file.U16(16).value_or(0);
    image.machine = file.U16(18).value_or(0);
    if (!image.is64Bit || !image.littleEndian) {
        return true;
    }
    const std::uint64_t table = file.U64(40).value_or(0);
    const std::uint16_t count = file.U16(60).value_or(0);
    const auto upTo = [&image](std::uint64_t start, std::uint64_t size) {
        // A sum that wraps around is beyond any file too.
        image.endOfData = std::max({image.endOfData, start, start + size});
    };
    upTo(table, count * kSectionSize);
    std::uint64_t budget = kMostEntries;
    for (std::uint16_t i = 0; i < count; ++i) {
        const Section section = SectionAt(file, table + i * kSectionSize);
        if (section.type != kTypeWithoutData) {
            upTo(section.offset, section.size);
        }
        const ByteView texts = DataOf(file, SectionAt(file, table + section.link * kSectionSize));
        if (section.type == kSymbolTable) {
            image.exportsEntryPoint =
                image.exportsEntryPoint || DefinesEntryPoint(DataOf(file, section), texts, budget);
        } else if (section.type == kDynamicTable && image.libraries.empty()) {
            ReadLibraries(DataOf(file, section), texts, image);
        }
    }
    return true;
}

}  // namespace mv::host
