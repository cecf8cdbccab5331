// Picture files of the command line: any bytes as a PNG or TIFF, by the libraries' readers and by
// our own; what could be read is written and read again.
#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "TestFolder.h"
#include "pictures/PictureFile.h"
#include "pictures/PictureSupport.h"
#include "pictures/PlainTiff.h"
#include "pictures/PngChunks.h"

namespace {

using fuzzing::Require;
using mv::host::Picture;
using mv::host::PictureResult;

std::uint32_t BigEndian(const std::string& bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    }
    return value;
}

void PutBigEndian(std::string& bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<char>(value >> (24 - 8 * i) & 255u);
    }
}

std::uint32_t Checksum(const std::string& bytes, std::size_t at, std::size_t size) {
    return static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(bytes.data() + at), static_cast<uInt>(size)));
}

// Makes the checksums of all chunks right: behind a wrong one nothing is read any more.
void RepairChecksums(std::string& png) {
    for (std::size_t at = 8; at + 12 <= png.size();) {
        const std::size_t size = BigEndian(png, at);
        if (size > png.size() - at - 12) {
            return;
        }
        PutBigEndian(png, at + 8 + size, Checksum(png, at + 4, size + 4));
        at += size + 12;
    }
}

// A number of a TIFF file in its byte order.
std::uint32_t TiffNumber(const std::string& bytes, std::size_t at, std::size_t count) {
    const bool bigEndian = bytes[0] == 'M';
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        value =
            value << 8 | static_cast<unsigned char>(bytes[at + (bigEndian ? i : count - 1 - i)]);
    }
    return value;
}

// Both sides as one byte each, of less than 64.
void MakeTiffSmall(std::string& content) {
    const std::size_t folder = TiffNumber(content, 4, 4);
    for (std::size_t at = folder + 2; at + 12 <= content.size() && at < folder + 600; at += 12) {
        const std::uint32_t tag = TiffNumber(content, at, 2);
        if (tag == 256 || tag == 257) {
            const std::uint32_t side = TiffNumber(content, at + 8, 4);
            const bool bigEndian = content[0] == 'M';
            const bool isShort = TiffNumber(content, at + 2, 2) == 3;
            const std::size_t lowest = !bigEndian ? 0 : isShort ? 1 : 3;
            std::fill_n(content.begin() + static_cast<std::ptrdiff_t>(at) + 8, 4, '\0');
            content[at + 8 + lowest] = static_cast<char>((side ^ side >> 16) & 63);
        }
    }
}

// A small file that claims to be large is made room for before it is found out, which takes as
// long as a hundred small pictures: most inputs get sides of less than 64 pixels.
void MakeSmall(std::string& content) {
    constexpr std::size_t kPngSides = 16;
    if (content.starts_with("\x89PNG") && content.size() > kPngSides + 8) {
        for (const std::size_t side : {kPngSides, kPngSides + 4}) {
            PutBigEndian(content, side, BigEndian(content, side) & 63u);
        }
    }
    if ((content.starts_with("II*") || content.starts_with(std::string_view("MM\0*", 4))) &&
        content.size() >= 8) {
        MakeTiffSmall(content);
    }
}

void RequireSound(const Picture& picture) {
    Require(picture.width > 0 && picture.height > 0, "a picture has pixels");
    Require(picture.width <= mv::host::kLargestSide && picture.height <= mv::host::kLargestSide,
            "a picture is no larger than the filter takes");
    Require(picture.colours == 1 || picture.colours == 3, "a picture is gray or RGB");
    Require(picture.samples.size() == picture.RowBytes() * static_cast<std::size_t>(picture.height),
            "a picture has exactly its samples");
    if (picture.resolution) {
        Require(!(picture.resolution->x < 0.0) && !(picture.resolution->y < 0.0),
                "a resolution is not negative");
    }
}

void WriteAndReadAgain(const Picture& picture, const std::string& path) {
    const PictureResult written = mv::host::WritePicture(path, picture);
    if (picture.type == mv::host::SampleType::Float32 && path.ends_with(".png")) {
        Require(written.has_value(), "floats do not go into a PNG");
        return;
    }
    Require(!written, "what was read can be written");
    Picture again;
    Require(!mv::host::ReadPicture(path, again), "what was written can be read");
    Require(again.width == picture.width && again.height == picture.height &&
                again.colours == picture.colours && again.alpha == picture.alpha &&
                again.type == picture.type && again.samples == picture.samples,
            "the samples come back");
    Require(again.color.iccProfile == picture.color.iccProfile, "the profile comes back");
}

// The readers that Windows builds use beside the system's own component.
void ReadPlainly(const std::string& path, const std::string& content) {
    mv::host::PngFacts png;
    static_cast<void>(mv::host::ReadPngFacts(path, png));
    const std::vector<std::uint8_t> bytes(content.begin(), content.end());
    static_cast<void>(mv::host::DescribePng(bytes, Picture{}));
    mv::host::TiffFacts facts;
    Picture picture;
    if (mv::host::ReadTiffFacts(path, facts) || mv::host::JudgeTiff(path, facts.layout, picture)) {
        return;
    }
    // A packing that nobody knows may claim any size. Room for it takes a second to make.
    constexpr std::uint64_t kMany = std::uint64_t{1} << 20;
    const std::uint64_t pixels = std::uint64_t{facts.layout.width} * facts.layout.height;
    if ((pixels > kMany && content.size() % 256 != 0) ||
        mv::host::MakeRoom(path, facts.layout.width, facts.layout.height, picture)) {
        return;
    }
    if (facts.layout.compression == mv::host::tiff::kNotPacked &&
        !mv::host::ReadPlainTiff(path, facts, picture, {})) {
        mv::host::NormalizeTiff(facts.layout, picture);
        RequireSound(picture);
    }
}

std::string ReadFile(const std::string& path) {
    std::string content(65536, '\0');
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t count = file < 0 ? 0 : read(file, content.data(), content.size());
    close(file);
    content.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return content;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzzing::TestFolder folder;
    static const std::string path = folder.File("input");
    fuzzing::FuzzInput input(data, size);
    const int kind = input.Byte();
    std::string content = input.Rest();
    if ((kind & 0xF0) != 0xF0) {
        MakeSmall(content);
    }
    if ((kind & 1) != 0) {
        RepairChecksums(content);
    }
    fuzzing::TestFolder::Write(path, content);
    if ((kind & 6) == 2) {
        ReadPlainly(path, content);
        return 0;
    }
    Picture picture;
    if (mv::host::ReadPicture(path, picture)) {
        return 0;
    }
    RequireSound(picture);
    static_cast<void>(mv::host::ToMask(picture));
    if ((kind & 6) == 4 && picture.samples.size() <= 65536) {
        WriteAndReadAgain(picture, folder.File((kind & 8) != 0 ? "output.png" : "output.tif"));
    }
    return 0;
}

// Small pictures of every shape, written by the program's own writers.
std::vector<std::string> fuzzing::Seeds() {
    const TestFolder folder;
    std::vector<std::string> seeds;
    for (int shape = 0; shape < 12; ++shape) {
        Picture picture;
        picture.width = 5;
        picture.height = 4;
        picture.colours = shape % 2 == 0 ? 1 : 3;
        picture.alpha = shape / 2 % 2 != 0;
        picture.type = static_cast<mv::host::SampleType>(shape / 4);
        picture.samples.resize(picture.RowBytes() * 4);
        for (std::size_t i = 0; i < picture.samples.size(); ++i) {
            picture.samples[i] = static_cast<std::uint8_t>(i * 7);
        }
        picture.color.iccProfile = std::vector<std::uint8_t>();
        picture.resolution = mv::host::Resolution{};
        for (const char* name : {"seed.png", "seed.tif"}) {
            const std::string path = folder.File(name);
            if (!mv::host::WritePicture(path, picture)) {
                for (const char kind : {'\x00', '\x01', '\x02', '\x05', '\x0D'}) {
                    seeds.push_back(kind + ReadFile(path));
                }
            }
        }
    }
    return seeds;
}
