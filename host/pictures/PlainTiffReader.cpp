#include <algorithm>
#include <bit>
#include <fstream>
#include <string>

#include "pictures/PictureSupport.h"
#include "pictures/PlainTiff.h"

namespace mv::host {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kEntrySize = 12;
constexpr std::uint32_t kLargestField = std::uint32_t{1} << 26;

enum Type : std::uint16_t { kByte = 1, kText = 2, kShort = 3, kLong = 4, kRational = 5 };

std::size_t SizeOfType(std::uint16_t type) {
    switch (type) {
        case kShort:
            return 2;
        case kLong:
            return 4;
        case kRational:
            return 8;
        case kByte:
        case kText:
        case 7:  // undefined
            return 1;
        default:
            return 0;  // none that matters here
    }
}

// Reads numbers and fields of a file in its byte order.
class TagReader {
public:
    explicit TagReader(const std::filesystem::path& path) : file_(path, std::ios::binary) {
        file_.seekg(0, std::ios::end);
        const std::streamoff end = file_.tellg();
        size_ = end > 0 ? static_cast<std::uint64_t>(end) : 0;
    }

    // Whether the file has so many bytes there: room is made for no more than that.
    bool Holds(std::uint64_t offset, std::uint64_t size) const {
        return offset <= size_ && size <= size_ - offset;
    }
    bool ReadAt(std::uint64_t offset, std::uint8_t* to, std::size_t size) {
        file_.clear();
        file_.seekg(static_cast<std::streamoff>(offset));
        file_.read(reinterpret_cast<char*>(to), static_cast<std::streamsize>(size));
        return file_.gcount() == static_cast<std::streamsize>(size);
    }
    void SetBigEndian(bool bigEndian) { bigEndian_ = bigEndian; }

    std::uint32_t Number(const std::uint8_t* bytes, std::size_t size) const {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            value = (value << 8) | bytes[bigEndian_ ? i : size - 1 - i];
        }
        return value;
    }
    // The data of a directory's entry, wherever it stands.
    bool Field(const std::uint8_t* entry, Bytes& data) {
        const std::size_t unit = SizeOfType(static_cast<std::uint16_t>(Number(entry + 2, 2)));
        const std::uint32_t count = Number(entry + 4, 4);
        if (unit == 0 || count > kLargestField) {
            return false;
        }
        const std::size_t size = unit * count;
        const std::uint32_t offset = Number(entry + 8, 4);
        if (size > 4 && !Holds(offset, size)) {
            return false;
        }
        data.resize(size);
        if (size <= 4) {
            std::copy_n(entry + 8, size, data.begin());
            return true;
        }
        return ReadAt(offset, data.data(), size);
    }
    std::vector<std::uint32_t> Numbers(const std::uint8_t* entry, const Bytes& data) const {
        const std::size_t unit = SizeOfType(static_cast<std::uint16_t>(Number(entry + 2, 2)));
        std::vector<std::uint32_t> numbers;
        for (std::size_t at = 0; unit <= 4 && at + unit <= data.size(); at += unit) {
            numbers.push_back(Number(&data[at], unit));
        }
        return numbers;
    }

private:
    std::ifstream file_;
    std::uint64_t size_ = 0;
    bool bigEndian_ = false;
};

double Rational(const TagReader& reader, const Bytes& data) {
    if (data.size() < 8) {
        return 0.0;
    }
    const std::uint32_t divisor = reader.Number(&data[4], 4);
    return divisor == 0 ? 0.0 : static_cast<double>(reader.Number(&data[0], 4)) / divisor;
}

// A tag that stands for one number, or null.
std::uint16_t* ShortTag(std::uint32_t tag, TiffLayout& layout) {
    switch (tag) {
        case 258:
            return &layout.bits;
        case 259:
            return &layout.compression;
        case 262:
            return &layout.photometric;
        case 274:
            return &layout.orientation;
        case 277:
            return &layout.samples;
        case 284:
            return &layout.planar;
        case 338:
            return &layout.extraSample;
        case 339:
            return &layout.sampleFormat;
        default:
            return nullptr;
    }
}

std::uint32_t* LongTag(std::uint32_t tag, TiffLayout& layout) {
    switch (tag) {
        case 256:
            return &layout.width;
        case 257:
            return &layout.height;
        case 278:
        case 323:
            return &layout.blockHeight;
        case 322:
            return &layout.blockWidth;
        default:
            return nullptr;
    }
}

struct Raw {
    double x = 0.0;
    double y = 0.0;
    std::uint32_t unit = 2;
};

void TakeField(const TagReader& reader, const std::uint8_t* entry, const Bytes& data,
               TiffFacts& facts, Raw& resolution) {
    const std::uint32_t tag = reader.Number(entry, 2);
    std::vector<std::uint32_t> numbers = reader.Numbers(entry, data);
    if (tag == 282 || tag == 283) {
        (tag == 282 ? resolution.x : resolution.y) = Rational(reader, data);
    } else if (tag == 34675) {
        facts.iccProfile = data;
    } else if (numbers.empty()) {
        return;
    } else if (std::uint16_t* const value = ShortTag(tag, facts.layout); value != nullptr) {
        *value = static_cast<std::uint16_t>(numbers[0]);
    } else if (std::uint32_t* const number = LongTag(tag, facts.layout); number != nullptr) {
        *number = numbers[0];
    } else if (tag == 273 || tag == 324) {
        facts.layout.tiled = tag == 324;
        facts.blockOffsets = std::move(numbers);
    } else if (tag == 279 || tag == 325) {
        facts.blockSizes = std::move(numbers);
    } else if (tag == 296) {
        resolution.unit = numbers[0];
    }
}

void TakeResolution(const Raw& raw, std::optional<Resolution>& resolution) {
    if (raw.x > 0.0 && raw.y > 0.0) {
        resolution = Resolution{raw.x, raw.y,
                                raw.unit == 3   ? ResolutionUnit::Centimetre
                                : raw.unit == 2 ? ResolutionUnit::Inch
                                                : ResolutionUnit::None};
    }
}

void SwapSamples(std::span<std::uint8_t> bytes, std::size_t size) {
    for (std::size_t at = 0; at + size <= bytes.size(); at += size) {
        std::reverse(&bytes[at], &bytes[at] + size);
    }
}

}  // namespace

PictureResult ReadTiffFacts(const std::filesystem::path& path, TiffFacts& facts) {
    TagReader reader(path);
    std::uint8_t header[8];
    if (!reader.ReadAt(0, header, sizeof header)) {
        return DamagedTiff(path, "it ends within its header");
    }
    facts.bigEndian = header[0] == 'M';
    reader.SetBigEndian(facts.bigEndian);
    if (reader.Number(header + 2, 2) != 42) {
        return Unsupported(path,
                           "is a BigTIFF picture, which cannot be read here; save it as TIFF");
    }
    const std::uint64_t start = reader.Number(header + 4, 4);
    std::uint8_t count[2];
    Bytes directory;
    if (reader.ReadAt(start, count, sizeof count) &&
        reader.Holds(start + 2, reader.Number(count, 2) * kEntrySize)) {
        directory.resize(reader.Number(count, 2) * kEntrySize);
    }
    if (directory.empty() || !reader.ReadAt(start + 2, directory.data(), directory.size())) {
        return DamagedTiff(path, "its directory is missing");
    }
    Raw resolution;
    Bytes data;
    for (std::size_t at = 0; at < directory.size(); at += kEntrySize) {
        if (reader.Field(&directory[at], data)) {
            TakeField(reader, &directory[at], data, facts, resolution);
        }
    }
    TakeResolution(resolution, facts.resolution);
    TiffLayout& layout = facts.layout;
    if (!layout.tiled) {
        layout.blockWidth = layout.width;
        layout.blockHeight =
            layout.blockHeight == 0 ? layout.height : std::min(layout.blockHeight, layout.height);
    }
    return {};
}

PictureResult ReadPlainTiff(const std::filesystem::path& path, const TiffFacts& facts,
                            Picture& picture, const StopFunction& stop) {
    TagReader file(path);
    const bool foreign = facts.bigEndian != (std::endian::native == std::endian::big);
    const auto reader = [&](std::uint32_t index, std::span<std::uint8_t> bytes) {
        if (index >= facts.blockOffsets.size() || index >= facts.blockSizes.size() ||
            facts.blockSizes[index] < bytes.size() ||
            !file.ReadAt(facts.blockOffsets[index], bytes.data(), bytes.size())) {
            return false;
        }
        if (foreign) {
            SwapSamples(bytes, picture.SampleBytes());
        }
        return true;
    };
    switch (ReadBlocks(facts.layout, picture, reader, stop)) {
        case BlockOutcome::Failed:
            return DamagedTiff(path, "pixels are missing");
        case BlockOutcome::Stopped:
            return Stopped(path);
        case BlockOutcome::Done:
            break;
    }
    return {};
}

}  // namespace mv::host
