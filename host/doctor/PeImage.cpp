#include "doctor/PeImage.h"

#include <algorithm>
#include <utility>

namespace mv::host {
namespace {

constexpr std::uint32_t kDosSignature = 0x5A4D;
constexpr std::uint32_t kPeSignature = 0x00004550;
constexpr std::uint16_t kMagic32 = 0x010B;
constexpr std::uint16_t kMagic64 = 0x020B;
constexpr std::uint64_t kFileHeaderSize = 24;  // with the signature
constexpr std::uint64_t kSectionSize = 40;
constexpr std::uint64_t kSymbolSize = 18;
constexpr std::uint64_t kCheckSumOffset = 64;  // in the optional header

// More than any sound file has; a hostile one could make the walk endless.
constexpr std::size_t kMostNames = 4096;
constexpr std::size_t kMostExports = 65536;
constexpr std::size_t kMostDirectories = 16;
constexpr std::size_t kMostSections = 96;  // as many as the system itself loads

void ReadSections(PeImage& image, std::uint64_t table, std::uint16_t count) {
    for (std::uint16_t i = 0; i < count; ++i) {
        const std::uint64_t at = table + i * kSectionSize;
        const auto memorySize = image.file.U32(at + 8);
        const auto address = image.file.U32(at + 12);
        const auto fileSize = image.file.U32(at + 16);
        const auto fileOffset = image.file.U32(at + 20);
        if (!memorySize || !address || !fileSize || !fileOffset) {
            image.endOfData = std::max(image.endOfData, at + kSectionSize);
            return;
        }
        if (image.sections.size() < kMostSections) {
            image.sections.push_back({*address, *memorySize, *fileOffset, *fileSize});
        }
        if (*fileSize > 0) {
            image.endOfData = std::max(image.endOfData, std::uint64_t{*fileOffset} + *fileSize);
        }
    }
}

// A table of symbols stands behind the sections, with its texts behind it.
void CountSymbols(PeImage& image) {
    const std::uint64_t symbols = image.file.U32(image.header + 12).value_or(0);
    if (symbols == 0) {
        return;
    }
    const std::uint64_t texts =
        symbols + image.file.U32(image.header + 16).value_or(0) * kSymbolSize;
    image.endOfData = std::max(image.endOfData, texts + image.file.U32(texts).value_or(4));
}

}  // namespace

ByteView PeImage::AtAddress(std::uint64_t address) const {
    for (const PeSection& section : sections) {
        if (address >= section.address && address - section.address < section.fileSize) {
            const std::uint64_t inside = address - section.address;
            return file.From(section.fileOffset + inside)
                .Part(0, std::min(section.fileSize - inside,
                                  file.From(section.fileOffset + inside).Size()))
                .value_or(ByteView());
        }
    }
    return {};
}

bool ReadPeImage(ByteView file, PeImage& image) {
    image.file = file;
    if (file.U16(0) != kDosSignature) {
        return false;
    }
    image.header = file.U32(0x3C).value_or(0);
    if (file.U32(image.header) != kPeSignature) {
        return false;
    }
    const std::uint64_t optional = image.header + kFileHeaderSize;
    const auto magic = file.U16(optional);
    if (magic != kMagic32 && magic != kMagic64) {
        return false;
    }
    image.is64Bit = magic == kMagic64;
    image.machine = file.U16(image.header + 4).value_or(0);
    image.flags = file.U16(image.header + 22).value_or(0);
    image.checkSum = file.U32(optional + kCheckSumOffset).value_or(0);
    image.protections = file.U16(optional + 70).value_or(0);
    const std::uint64_t countOffset = optional + (image.is64Bit ? 108 : 92);
    const std::size_t count =
        std::min<std::size_t>(file.U32(countOffset).value_or(0), kMostDirectories);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t at = countOffset + 4 + i * 8;
        image.directories.push_back({file.U32(at).value_or(0), file.U32(at + 4).value_or(0)});
    }
    const std::uint64_t table = optional + file.U16(image.header + 20).value_or(0);
    image.endOfData = table;
    ReadSections(image, table, file.U16(image.header + 6).value_or(0));
    CountSymbols(image);
    const PeImage::Directory signature = image.DirectoryAt(kSignatureDirectory);
    if (signature.size > 0) {
        image.endOfData =
            std::max(image.endOfData, std::uint64_t{signature.address} + signature.size);
    }
    return true;
}

std::vector<std::string> ReadExports(const PeImage& image) {
    std::vector<std::string> names;
    const ByteView directory = image.AtAddress(image.DirectoryAt(kExportDirectory).address);
    const auto count = directory.U32(24);
    const auto table = directory.U32(32);
    if (image.DirectoryAt(kExportDirectory).size == 0 || !count || !table) {
        return names;
    }
    const ByteView addresses = image.AtAddress(*table);
    for (std::uint32_t i = 0; i < *count && names.size() < kMostExports; ++i) {
        const auto address = addresses.U32(std::uint64_t{i} * 4);
        if (!address) {
            break;
        }
        names.push_back(Printable(image.AtAddress(*address).Text(0)));
    }
    return names;
}

namespace {

// Descriptors of one size, one behind the other up to an empty one, each with its library's name.
void AppendImports(const PeImage& image, std::size_t index, std::uint64_t size,
                   std::uint64_t nameOffset, std::vector<std::string>& names) {
    const PeImage::Directory directory = image.DirectoryAt(index);
    if (directory.size == 0) {
        return;
    }
    const ByteView table = image.AtAddress(directory.address);
    for (std::uint64_t at = 0; names.size() < kMostNames; at += size) {
        const std::uint32_t name = table.U32(at + nameOffset).value_or(0);
        if (name == 0) {
            return;
        }
        names.push_back(Printable(image.AtAddress(name).Text(0)));
    }
}

}  // namespace

std::vector<std::string> ReadImports(const PeImage& image) {
    std::vector<std::string> names;
    AppendImports(image, kImportDirectory, 20, 12, names);
    AppendImports(image, kDelayImportDirectory, 32, 4, names);
    return names;
}

// The sum of all 16-bit words with the carry added back in, without the field itself, plus the
// length.
std::uint32_t ComputeCheckSum(const PeImage& image) {
    const std::uint64_t field = image.header + kFileHeaderSize + kCheckSumOffset;
    const std::span<const std::uint8_t> bytes = image.file.Bytes();
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i < field || i >= field + 4) {
            sum += static_cast<std::uint64_t>(bytes[i]) << (i % 2 * 8);
        }
    }
    while (sum > 0xFFFF) {
        sum = (sum & 0xFFFF) + (sum >> 16);
    }
    return static_cast<std::uint32_t>(sum + bytes.size());
}

namespace {

// A name in the resource tree: a number, or a counted text of 16-bit letters.
std::string ResourceName(const ByteView& tree, std::uint32_t name) {
    constexpr std::uint32_t kIsText = 0x80000000;
    if ((name & kIsText) == 0) {
        return "#" + std::to_string(name);
    }
    const std::uint64_t at = name & ~kIsText;
    const std::uint32_t length = std::min<std::uint32_t>(tree.U16(at).value_or(0), 64);
    std::string text;
    for (std::uint32_t i = 0; i < length; ++i) {
        const auto letter = tree.U16(at + 2 + i * 2);
        if (!letter) {
            break;
        }
        text += *letter < 0x80 ? static_cast<char>(*letter) : '?';
    }
    return Printable(text);
}

// Walks the three levels of the tree: type, name, language.
class ResourceWalk {
public:
    explicit ResourceWalk(const PeImage& image)
        : image_(image), tree_(image.AtAddress(image.DirectoryAt(kResourceDirectory).address)) {}

    std::vector<PeResource> Take() {
        if (image_.DirectoryAt(kResourceDirectory).size > 0) {
            Visit(0, 0, {});
        }
        return std::move(resources_);
    }

private:
    void Visit(std::uint64_t directory, int level, const PeResource& above) {
        const std::uint32_t count = std::uint32_t{tree_.U16(directory + 12).value_or(0)} +
                                    tree_.U16(directory + 14).value_or(0);
        for (std::uint32_t i = 0; i < count; ++i) {
            const auto name = tree_.U32(directory + 16 + i * 8);
            const auto target = tree_.U32(directory + 20 + i * 8);
            if (!name || !target || ++visited_ > kMostNames) {
                return;
            }
            PeResource resource = above;
            if (level < 2) {
                (level == 0 ? resource.type : resource.name) = ResourceName(tree_, *name);
            }
            constexpr std::uint32_t kIsDirectory = 0x80000000;
            if ((*target & kIsDirectory) == 0) {
                Add(std::move(resource), *target);
            } else if (level < 2) {
                Visit(*target & ~kIsDirectory, level + 1, resource);
            }
        }
    }

    void Add(PeResource resource, std::uint64_t entry) {
        const auto address = tree_.U32(entry);
        const auto size = tree_.U32(entry + 4);
        if (address && size) {
            resource.data = image_.AtAddress(*address).Part(0, *size).value_or(ByteView());
            resources_.push_back(std::move(resource));
        }
    }

    const PeImage& image_;
    ByteView tree_;
    std::size_t visited_ = 0;
    std::vector<PeResource> resources_;
};

}  // namespace

std::vector<PeResource> ReadResources(const PeImage& image) {
    return ResourceWalk(image).Take();
}

}  // namespace mv::host
