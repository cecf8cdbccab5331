#include "pictures/PlainTiff.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

#include "pictures/PictureSupport.h"

namespace mv::host {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint64_t kLargestFile = 0xFFFF'0000;
constexpr std::size_t kWriteSize = std::size_t{1} << 24;

enum Type : std::uint16_t { kShort = 3, kLong = 4, kRational = 5, kUndefined = 7 };

void Append16(Bytes& to, std::uint32_t value) {
    to.push_back(static_cast<std::uint8_t>(value));
    to.push_back(static_cast<std::uint8_t>(value >> 8));
}

void Append32(Bytes& to, std::uint32_t value) {
    Append16(to, value & 0xFFFF);
    Append16(to, value >> 16);
}

// The directory, with what does not fit into its entries behind it. Tags come in rising order.
class Directory {
public:
    explicit Directory(std::uint32_t offset) : offset_(offset) {}

    void AddShorts(std::uint16_t tag, const std::vector<std::uint32_t>& values) {
        Bytes data;
        for (const std::uint32_t value : values) {
            Append16(data, value);
        }
        entries_.push_back({tag, kShort, static_cast<std::uint32_t>(values.size()), data});
    }
    void AddLong(std::uint16_t tag, std::uint32_t value) {
        Bytes data;
        Append32(data, value);
        entries_.push_back({tag, kLong, 1, data});
    }
    // Hundred thousandths are exact enough for any resolution.
    void AddRational(std::uint16_t tag, double value) {
        const double divisor = value == std::floor(value) ? 1.0 : 100000.0;
        const double scaled = std::fmin(value * divisor, 4294967295.0);
        Bytes data;
        Append32(data, static_cast<std::uint32_t>(std::llround(scaled)));
        Append32(data, static_cast<std::uint32_t>(divisor));
        entries_.push_back({tag, kRational, 1, data});
    }
    void AddBytes(std::uint16_t tag, const Bytes& bytes) {
        entries_.push_back({tag, kUndefined, static_cast<std::uint32_t>(bytes.size()), bytes});
    }

    Bytes Finish() const {
        Bytes head;
        Bytes tail;
        const std::size_t headSize = 2 + entries_.size() * 12 + 4;
        Append16(head, static_cast<std::uint32_t>(entries_.size()));
        for (const Entry& entry : entries_) {
            Append16(head, entry.tag);
            Append16(head, entry.type);
            Append32(head, entry.count);
            Bytes field = entry.data;
            if (field.size() > 4) {
                field.clear();
                Append32(field, offset_ + static_cast<std::uint32_t>(headSize + tail.size()));
                tail.insert(tail.end(), entry.data.begin(), entry.data.end());
                tail.resize(tail.size() + tail.size() % 2);
            }
            field.resize(4);
            head.insert(head.end(), field.begin(), field.end());
        }
        Append32(head, 0);
        head.insert(head.end(), tail.begin(), tail.end());
        return head;
    }

private:
    struct Entry {
        std::uint16_t tag;
        std::uint16_t type;
        std::uint32_t count;
        Bytes data;
    };

    std::uint32_t offset_;
    std::vector<Entry> entries_;
};

Bytes DirectoryOf(const Picture& picture, std::uint32_t offset, std::uint32_t pixelOffset) {
    constexpr std::uint32_t kUnassociatedAlpha = 2;
    const auto channels = static_cast<std::size_t>(picture.Channels());
    const std::uint32_t format = picture.type == SampleType::Float32 ? 3 : 1;
    Directory directory(offset);
    directory.AddLong(256, static_cast<std::uint32_t>(picture.width));
    directory.AddLong(257, static_cast<std::uint32_t>(picture.height));
    directory.AddShorts(258, std::vector<std::uint32_t>(
                                 channels, static_cast<std::uint32_t>(picture.SampleBytes() * 8)));
    directory.AddShorts(259, {1});  // not packed
    directory.AddShorts(262, {picture.colours == 1 ? 1U : 2U});
    directory.AddLong(273, pixelOffset);
    directory.AddShorts(274, {1});
    directory.AddShorts(277, {static_cast<std::uint32_t>(channels)});
    directory.AddLong(278, static_cast<std::uint32_t>(picture.height));
    directory.AddLong(279, static_cast<std::uint32_t>(picture.samples.size()));
    if (picture.resolution) {
        directory.AddRational(282, picture.resolution->x);
        directory.AddRational(283, picture.resolution->y);
    }
    directory.AddShorts(284, {1});  // whole pixels
    if (picture.resolution) {
        const ResolutionUnit unit = picture.resolution->unit;
        directory.AddShorts(296, {unit == ResolutionUnit::Inch         ? 2U
                                  : unit == ResolutionUnit::Centimetre ? 3U
                                                                       : 1U});
    }
    if (picture.alpha) {
        directory.AddShorts(338, {kUnassociatedAlpha});
    }
    directory.AddShorts(339, std::vector<std::uint32_t>(channels, format));
    if (!picture.color.iccProfile.empty()) {
        directory.AddBytes(34675, picture.color.iccProfile);
    }
    return directory.Finish();
}

}  // namespace

PictureResult WritePlainTiff(const std::filesystem::path& path, AtomicFile& file,
                             const Picture& picture, const StopFunction& stop) {
    static_assert(std::endian::native == std::endian::little);
    constexpr std::uint32_t kHeaderSize = 8;
    // The directory's size does not depend on the offset of the pixels behind it.
    const std::size_t directorySize = DirectoryOf(picture, kHeaderSize, 0).size();
    const std::size_t pixelOffset = kHeaderSize + directorySize;
    if (picture.samples.size() > kLargestFile - pixelOffset) {
        return CannotWrite(path, "a TIFF file of this kind holds less than 4 GiB");
    }
    Bytes start = {'I', 'I', 42, 0};
    Append32(start, kHeaderSize);
    const Bytes directory =
        DirectoryOf(picture, kHeaderSize, static_cast<std::uint32_t>(pixelOffset));
    start.insert(start.end(), directory.begin(), directory.end());
    if (!file.Write(start.data(), start.size())) {
        return CannotWrite(path, file.WriteFailure());
    }
    for (std::size_t at = 0; at < picture.samples.size(); at += kWriteSize) {
        if (stop && stop()) {
            return Stopped(path);
        }
        const std::size_t size = std::min(kWriteSize, picture.samples.size() - at);
        if (!file.Write(&picture.samples[at], size)) {
            return CannotWrite(path, file.WriteFailure());
        }
    }
    return {};
}

}  // namespace mv::host
