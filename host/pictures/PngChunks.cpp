#include "pictures/PngChunks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <string>
#include <string_view>

namespace mv::host {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kHeaderEnd = 33;  // of the signature and the IHDR chunk
constexpr std::size_t kSmallChunk = 64;
constexpr std::string_view kOwnChunks[] = {"iCCP", "sRGB", "gAMA", "cHRM", "pHYs"};

std::uint32_t BigEndian32(const std::uint8_t* bytes) {
    return (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
           (std::uint32_t{bytes[2]} << 8) | bytes[3];
}

void Append32(Bytes& to, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        to.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

std::uint32_t Crc32(const std::uint8_t* first, const std::uint8_t* last) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (; first != last; ++first) {
        crc ^= *first;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
        }
    }
    return ~crc;
}

void AppendChunk(Bytes& to, std::string_view type, const Bytes& data) {
    Append32(to, static_cast<std::uint32_t>(data.size()));
    const std::size_t start = to.size();
    to.insert(to.end(), type.begin(), type.end());
    to.insert(to.end(), data.begin(), data.end());
    Append32(to, Crc32(to.data() + start, to.data() + to.size()));
}

// A zlib stream of stored blocks: a profile is small, and so its size does not matter.
void AppendStored(Bytes& to, const Bytes& data) {
    constexpr std::size_t kLargestBlock = 65535;
    to.insert(to.end(), {0x78, 0x01});
    std::uint32_t low = 1;
    std::uint32_t high = 0;
    for (std::size_t start = 0; start < data.size(); start += kLargestBlock) {
        const std::size_t size = std::min(kLargestBlock, data.size() - start);
        to.push_back(start + size == data.size() ? 1 : 0);
        for (const std::size_t value : {size, ~size}) {
            to.push_back(static_cast<std::uint8_t>(value));
            to.push_back(static_cast<std::uint8_t>(value >> 8));
        }
        for (std::size_t i = start; i < start + size; ++i) {
            to.push_back(data[i]);
            low = (low + data[i]) % 65521;
            high = (high + low) % 65521;
        }
    }
    Append32(to, (high << 16) | low);
}

void AppendResolution(Bytes& to, const Resolution& resolution) {
    double scale = 1.0;  // to pixels per metre
    if (resolution.unit == ResolutionUnit::Inch) {
        scale = 1.0 / 0.0254;
    } else if (resolution.unit == ResolutionUnit::Centimetre) {
        scale = 100.0;
    }
    Bytes data;
    for (const double value : {resolution.x, resolution.y}) {
        Append32(data,
                 static_cast<std::uint32_t>(std::llround(std::fmin(value * scale, 2147483647.0))));
    }
    data.push_back(resolution.unit == ResolutionUnit::None ? 0 : 1);
    AppendChunk(to, "pHYs", data);
}

void AppendDescription(Bytes& to, const Picture& picture) {
    const ColorDescription& color = picture.color;
    if (color.fileGamma) {
        Bytes data;
        Append32(data, static_cast<std::uint32_t>(*color.fileGamma));
        AppendChunk(to, "gAMA", data);
    }
    if (color.chromaticities) {
        Bytes data;
        for (const std::int32_t value : *color.chromaticities) {
            Append32(data, static_cast<std::uint32_t>(value));
        }
        AppendChunk(to, "cHRM", data);
    }
    // The format allows one of the two.
    if (!color.iccProfile.empty()) {
        constexpr std::string_view name = "ICC profile";
        Bytes data(name.begin(), name.end());
        data.insert(data.end(), {0, 0});  // the end of the name, and the one way of packing
        AppendStored(data, color.iccProfile);
        AppendChunk(to, "iCCP", data);
    } else if (color.srgbIntent) {
        AppendChunk(to, "sRGB", {static_cast<std::uint8_t>(*color.srgbIntent)});
    }
    if (picture.resolution) {
        AppendResolution(to, *picture.resolution);
    }
}

void TakeChunk(std::string_view type, const Bytes& data, PngFacts& facts) {
    if (type == "gAMA" && data.size() == 4) {
        facts.color.fileGamma = static_cast<std::int32_t>(BigEndian32(data.data()));
    } else if (type == "sRGB" && data.size() == 1) {
        facts.color.srgbIntent = data[0];
    } else if (type == "cHRM" && data.size() == 32) {
        std::array<std::int32_t, 8> points;
        for (std::size_t i = 0; i < points.size(); ++i) {
            points[i] = static_cast<std::int32_t>(BigEndian32(&data[i * 4]));
        }
        facts.color.chromaticities = points;
    } else if (type == "pHYs" && data.size() == 9) {
        const std::uint32_t x = BigEndian32(&data[0]);
        const std::uint32_t y = BigEndian32(&data[4]);
        if (x > 0 && y > 0) {
            const double scale = data[8] == 1 ? 0.01 : 1.0;
            facts.resolution =
                Resolution{x * scale, y * scale,
                           data[8] == 1 ? ResolutionUnit::Centimetre : ResolutionUnit::None};
        }
    }
}

bool ReadExactly(std::ifstream& file, std::uint8_t* to, std::size_t size) {
    file.read(reinterpret_cast<char*>(to), static_cast<std::streamsize>(size));
    return file.gcount() == static_cast<std::streamsize>(size);
}

}  // namespace

bool ReadPngFacts(const std::filesystem::path& path, PngFacts& facts) {
    std::ifstream file(path, std::ios::binary);
    std::array<std::uint8_t, kHeaderEnd> head;
    if (!ReadExactly(file, head.data(), head.size()) ||
        std::string(head.begin() + 12, head.begin() + 16) != "IHDR") {
        return false;
    }
    facts.width = BigEndian32(&head[16]);
    facts.height = BigEndian32(&head[20]);
    facts.bits = head[24];
    facts.colorType = head[25];
    std::array<std::uint8_t, 8> start;
    while (ReadExactly(file, start.data(), start.size())) {
        const std::uint32_t size = BigEndian32(start.data());
        const std::string type(start.begin() + 4, start.end());
        if (type == "IDAT") {
            break;
        }
        if (size <= kSmallChunk) {
            Bytes data(size);
            if (!ReadExactly(file, data.data(), data.size())) {
                break;
            }
            TakeChunk(type, data, facts);
            file.seekg(4, std::ios::cur);
        } else {
            file.seekg(std::streamoff{size} + 4, std::ios::cur);
        }
    }
    return true;
}

std::vector<std::uint8_t> DescribePng(const std::vector<std::uint8_t>& png,
                                      const Picture& picture) {
    if (png.size() < kHeaderEnd) {
        return png;
    }
    Bytes result(png.begin(), png.begin() + kHeaderEnd);
    AppendDescription(result, picture);
    std::size_t at = kHeaderEnd;
    while (at + 12 <= png.size()) {
        const std::size_t size = std::size_t{BigEndian32(&png[at])} + 12;
        const std::string_view type(reinterpret_cast<const char*>(&png[at + 4]), 4);
        const bool own =
            std::find(std::begin(kOwnChunks), std::end(kOwnChunks), type) != std::end(kOwnChunks);
        const std::size_t end = std::min(at + size, png.size());
        if (!own) {
            result.insert(result.end(), png.begin() + static_cast<std::ptrdiff_t>(at),
                          png.begin() + static_cast<std::ptrdiff_t>(end));
        }
        at = end;
    }
    return result;
}

}  // namespace mv::host
