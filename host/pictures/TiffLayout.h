// What the tags of a TIFF file say about its pixels, judged and read in the same way on every
// system; who reads the tags and unpacks the blocks differs.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <vector>

#include "pictures/PictureFile.h"

namespace mv::host {

// The numbers of the format that matter here.
namespace tiff {
constexpr std::uint16_t kWhiteIsZero = 0;
constexpr std::uint16_t kBlackIsZero = 1;
constexpr std::uint16_t kRgb = 2;
constexpr std::uint16_t kYCbCr = 6;
constexpr std::uint16_t kUnsigned = 1;
constexpr std::uint16_t kFloat = 3;
constexpr std::uint16_t kUndefinedFormat = 4;
constexpr std::uint16_t kSeparatePlanes = 2;
constexpr std::uint16_t kMultipliedAlpha = 1;
constexpr std::uint16_t kNotPacked = 1;
constexpr std::uint16_t kLzw = 5;
constexpr std::uint16_t kJpeg = 7;
constexpr std::uint16_t kDeflate = 8;
constexpr std::uint16_t kOldDeflate = 32946;
constexpr std::uint16_t kPackBits = 32773;
}  // namespace tiff

// The defaults are those of the format.
struct TiffLayout {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t bits = 1;
    std::uint16_t samples = 1;
    std::uint16_t sampleFormat = tiff::kUnsigned;
    std::uint16_t photometric = tiff::kBlackIsZero;
    std::uint16_t planar = 1;
    std::uint16_t orientation = 1;
    std::uint16_t compression = tiff::kNotPacked;
    std::uint16_t extraSample = 0;  // kind of the first channel beyond the colours
    // A block is a strip, or a tile: the part of the picture that is packed as one.
    bool tiled = false;
    std::uint32_t blockWidth = 0;
    std::uint32_t blockHeight = 0;
};

// Sets the picture's shape, or says why such a file is not read. JPEG packing comes with colours
// of its own, which unpackers turn into RGB.
PictureResult JudgeTiff(const std::filesystem::path& path, const TiffLayout& layout,
                        Picture& picture);

// The bytes that a block has when it is unpacked.
std::uint64_t BlockBytes(const TiffLayout& layout, const Picture& picture);

// Fills a block's bytes with its samples in the machine's byte order; false when it cannot. The
// last strip may be shorter than the span.
using BlockReader = std::function<bool(std::uint32_t index, std::span<std::uint8_t> bytes)>;

enum class BlockOutcome { Done, Failed, Stopped };

// Reads all blocks into the picture, which has its room already.
BlockOutcome ReadBlocks(const TiffLayout& layout, Picture& picture, const BlockReader& reader,
                        const StopFunction& stop);

// Gray that counts from white, colours multiplied by alpha, turned pictures: made usual.
void NormalizeTiff(const TiffLayout& layout, Picture& picture);

PictureError DamagedTiff(const std::filesystem::path& path, const std::string& detail);

}  // namespace mv::host
