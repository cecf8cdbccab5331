#include "support/TestFiles.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace mv::host::test {
namespace {

namespace fs = std::filesystem;

void Append(Bytes& to, const Bytes& from) {
    to.insert(to.end(), from.begin(), from.end());
}

std::uint32_t Crc32(const Bytes& data) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const std::uint8_t byte : data) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
        }
    }
    return ~crc;
}

std::uint32_t Adler32(const Bytes& data) {
    std::uint32_t low = 1;
    std::uint32_t high = 0;
    for (const std::uint8_t byte : data) {
        low = (low + byte) % 65521;
        high = (high + low) % 65521;
    }
    return (high << 16) | low;
}

void AppendChunk(Bytes& file, const std::string& type, const Bytes& data) {
    Bytes body(type.begin(), type.end());
    Append(body, data);
    Append(file, BigEndian32(static_cast<std::uint32_t>(data.size())));
    Append(file, body);
    Append(file, BigEndian32(Crc32(body)));
}

Bytes Ordered(bool bigEndian, std::uint64_t value, int count) {
    Bytes bytes;
    for (int i = 0; i < count; ++i) {
        const int shift = 8 * (bigEndian ? count - 1 - i : i);
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
    return bytes;
}

std::size_t SizeOfType(std::uint16_t type) {
    switch (type) {
        case 3:
            return 2;
        case 4:
            return 4;
        case 5:
            return 8;
        default:
            return 1;
    }
}

std::vector<TiffTag> AllTags(const TiffPicture& tiff, const Bytes& offsets, const Bytes& counts) {
    std::vector<TiffTag> tags = tiff.tags;
    Bytes bits;
    Bytes formats;
    for (int i = 0; i < tiff.samples; ++i) {
        Append(bits, Short(tiff, tiff.bits));
        Append(formats, Short(tiff, tiff.sampleFormat));
    }
    tags.push_back({256, 4, Long(tiff, tiff.width)});
    tags.push_back({257, 4, Long(tiff, tiff.height)});
    tags.push_back({258, 3, bits});
    tags.push_back({259, 3, Short(tiff, tiff.compression)});
    tags.push_back({262, 3, Short(tiff, tiff.photometric)});
    tags.push_back({277, 3, Short(tiff, tiff.samples)});
    tags.push_back({284, 3, Short(tiff, tiff.planar)});
    tags.push_back({339, 3, formats});
    if (tiff.tileWidth != 0) {
        tags.push_back({322, 4, Long(tiff, tiff.tileWidth)});
        tags.push_back({323, 4, Long(tiff, tiff.tileHeight)});
        tags.push_back({324, 4, offsets});
        tags.push_back({325, 4, counts});
    } else {
        tags.push_back({273, 4, offsets});
        tags.push_back(
            {278, 4, Long(tiff, tiff.rowsPerStrip != 0 ? tiff.rowsPerStrip : tiff.height)});
        tags.push_back({279, 4, counts});
    }
    std::sort(tags.begin(), tags.end(),
              [](const TiffTag& left, const TiffTag& right) { return left.tag < right.tag; });
    return tags;
}

}  // namespace

TempFolder::TempFolder() {
    static std::atomic<int> count{0};
    std::random_device random;
    path_ = fs::temp_directory_path() /
            ("radial-blur-test-" + std::to_string(random()) + "-" + std::to_string(++count));
    fs::create_directories(path_);
}

TempFolder::~TempFolder() {
    std::error_code error;
    fs::remove_all(path_, error);
}

fs::path TempFolder::operator/(const std::string& name) const {
    return path_ / name;
}

std::vector<std::string> TempFolder::Names() const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(path_)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

Bytes ReadBytes(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot open " + path.string());
    }
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

void WriteBytes(const fs::path& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

void WriteText(const fs::path& path, const std::string& text) {
    WriteBytes(path, Bytes(text.begin(), text.end()));
}

Bytes ColourProfile(const std::string& colorSpace) {
    constexpr std::size_t kTagSize = 512;
    Bytes profile(132, 0);
    const auto put = [&profile](std::size_t at, const std::string& text) {
        std::copy(text.begin(), text.end(), profile.begin() + static_cast<std::ptrdiff_t>(at));
    };
    profile[8] = 2;
    profile[9] = 0x40;
    put(12, "mntr");
    put(16, colorSpace);
    put(20, "XYZ ");
    put(36, "acsp");
    const Bytes illuminant = {0, 0, 0xF6, 0xD6, 0, 1, 0, 0, 0, 0, 0xD3, 0x2D};
    std::copy(illuminant.begin(), illuminant.end(), profile.begin() + 68);
    profile[131] = 1;  // one tag
    Append(profile, {'d', 'e', 's', 'c'});
    Append(profile, BigEndian32(144));
    Append(profile, BigEndian32(kTagSize));
    std::uint32_t state = 1;
    for (std::size_t i = 0; i < kTagSize; ++i) {
        state = state * 1664525 + 1013904223;
        profile.push_back(static_cast<std::uint8_t>(state >> 24));
    }
    const Bytes size = BigEndian32(static_cast<std::uint32_t>(profile.size()));
    std::copy(size.begin(), size.end(), profile.begin());
    return profile;
}

Bytes BigEndian32(std::uint32_t value) {
    return Ordered(true, value, 4);
}

Bytes StoredZlib(const Bytes& data) {
    Bytes stream = {0x78, 0x01};
    constexpr std::size_t kLargestBlock = 65535;
    std::size_t start = 0;
    do {
        const std::size_t size = std::min(kLargestBlock, data.size() - start);
        stream.push_back(start + size == data.size() ? 1 : 0);
        Append(stream, Ordered(false, size, 2));
        Append(stream, Ordered(false, ~size & 0xFFFF, 2));
        stream.insert(stream.end(), data.begin() + static_cast<std::ptrdiff_t>(start),
                      data.begin() + static_cast<std::ptrdiff_t>(start + size));
        start += size;
    } while (start < data.size());
    Append(stream, BigEndian32(Adler32(data)));
    return stream;
}

void WritePngFile(const fs::path& path, const PngFile& png) {
    Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header = BigEndian32(png.width);
    Append(header, BigEndian32(png.height));
    Append(header, {png.bits, png.colorType, 0, 0, static_cast<std::uint8_t>(png.interlaced)});
    AppendChunk(file, "IHDR", header);
    for (const PngChunk& chunk : png.chunks) {
        AppendChunk(file, chunk.type, chunk.data);
    }
    Bytes pixels;
    for (const Bytes& row : png.rows) {
        pixels.push_back(0);  // no filter
        Append(pixels, row);
    }
    AppendChunk(file, "IDAT", StoredZlib(pixels));
    AppendChunk(file, "IEND", {});
    WriteBytes(path, file);
}

Bytes FindPngChunk(const fs::path& path, const std::string& type) {
    const Bytes file = ReadBytes(path);
    std::size_t at = 8;
    while (at + 12 <= file.size()) {
        const std::size_t size = (std::size_t{file[at]} << 24) | (std::size_t{file[at + 1]} << 16) |
                                 (std::size_t{file[at + 2]} << 8) | file[at + 3];
        const std::string found(file.begin() + static_cast<std::ptrdiff_t>(at + 4),
                                file.begin() + static_cast<std::ptrdiff_t>(at + 8));
        const auto data = file.begin() + static_cast<std::ptrdiff_t>(at + 8);
        if (found == type) {
            return Bytes(data, data + static_cast<std::ptrdiff_t>(size));
        }
        at += 12 + size;
    }
    return {};
}

Bytes Short(const TiffPicture& tiff, std::uint16_t value) {
    return Ordered(tiff.bigEndian, value, 2);
}

Bytes Long(const TiffPicture& tiff, std::uint32_t value) {
    return Ordered(tiff.bigEndian, value, 4);
}

// Codes of nine bits for single bytes, with a fresh table before wider codes would be due.
Bytes SimpleLzw(const Bytes& data) {
    constexpr unsigned kClear = 256;
    constexpr unsigned kEnd = 257;
    Bytes packed;
    std::uint32_t bits = 0;
    int count = 0;
    const auto put = [&](unsigned code) {
        bits = (bits << 9) | code;
        for (count += 9; count >= 8; count -= 8) {
            packed.push_back(static_cast<std::uint8_t>(bits >> (count - 8)));
        }
    };
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (i % 200 == 0) {
            put(kClear);
        }
        put(data[i]);
    }
    put(kEnd);
    put(0);  // fills the last byte
    return packed;
}

Bytes SimplePackBits(const Bytes& data) {
    Bytes packed;
    for (std::size_t start = 0; start < data.size(); start += 128) {
        const std::size_t size = std::min<std::size_t>(128, data.size() - start);
        packed.push_back(static_cast<std::uint8_t>(size - 1));
        packed.insert(packed.end(), data.begin() + static_cast<std::ptrdiff_t>(start),
                      data.begin() + static_cast<std::ptrdiff_t>(start + size));
    }
    return packed;
}

// Header, pixel data, data of long tags, directory.
void WriteTiffFile(const fs::path& path, const TiffPicture& tiff) {
    Bytes file =
        tiff.bigEndian ? Bytes{'M', 'M', 0, 42, 0, 0, 0, 0} : Bytes{'I', 'I', 42, 0, 0, 0, 0, 0};
    Bytes offsets;
    Bytes counts;
    for (const Bytes& block : tiff.blocks) {
        Append(offsets, Long(tiff, static_cast<std::uint32_t>(file.size())));
        Append(counts, Long(tiff, static_cast<std::uint32_t>(block.size())));
        Append(file, block);
        file.resize(file.size() + file.size() % 2);
    }
    const std::vector<TiffTag> tags = AllTags(tiff, offsets, counts);
    Bytes directory = Short(tiff, static_cast<std::uint16_t>(tags.size()));
    for (const TiffTag& tag : tags) {
        Append(directory, Short(tiff, tag.tag));
        Append(directory, Short(tiff, tag.type));
        Append(directory,
               Long(tiff, static_cast<std::uint32_t>(tag.data.size() / SizeOfType(tag.type))));
        Bytes value = tag.data;
        if (value.size() > 4) {
            value = Long(tiff, static_cast<std::uint32_t>(file.size()));
            Append(file, tag.data);
            file.resize(file.size() + file.size() % 2);
        }
        value.resize(4);
        Append(directory, value);
    }
    Append(directory, Long(tiff, 0));
    const Bytes start = Long(tiff, static_cast<std::uint32_t>(file.size()));
    std::copy(start.begin(), start.end(), file.begin() + 4);
    Append(file, directory);
    WriteBytes(path, file);
}

std::uint32_t GradientLevel(int x, int y, int channel, int bits) {
    const auto mixed = static_cast<std::uint32_t>(x * 7 + y * 131 + channel * 61);
    return bits == 16 ? (mixed * 977) & 0xFFFF : mixed & 0xFF;
}

void WriteGradientPng(const fs::path& path, int width, int height, int channels, int bits) {
    constexpr std::array<std::uint8_t, 5> kTypes = {0, 0, 4, 2, 6};
    PngFile png;
    png.width = static_cast<std::uint32_t>(width);
    png.height = static_cast<std::uint32_t>(height);
    png.bits = static_cast<std::uint8_t>(bits);
    png.colorType = kTypes[static_cast<std::size_t>(channels)];
    for (int y = 0; y < height; ++y) {
        Bytes row;
        for (int x = 0; x < width; ++x) {
            for (int channel = 0; channel < channels; ++channel) {
                Append(row, Ordered(true, GradientLevel(x, y, channel, bits), bits / 8));
            }
        }
        png.rows.push_back(row);
    }
    WritePngFile(path, png);
}

}  // namespace mv::host::test
