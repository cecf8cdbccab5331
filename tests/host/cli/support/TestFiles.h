// Folders and picture files for the tests, made without the code under test.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace mv::host::test {

using Bytes = std::vector<std::uint8_t>;

// A folder of its own, removed with everything in it.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::filesystem::path Path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const;
    // The names of all that is in it, sorted.
    std::vector<std::string> Names() const;

private:
    std::filesystem::path path_;
};

Bytes ReadBytes(const std::filesystem::path& path);
void WriteBytes(const std::filesystem::path& path, const Bytes& bytes);
void WriteText(const std::filesystem::path& path, const std::string& text);

// A colour profile that readers accept, for "RGB " or "GRAY"; its one tag does not pack well, since
// a very short packed profile counts as damaged.
Bytes ColourProfile(const std::string& colorSpace);

struct PngChunk {
    std::string type;
    Bytes data;
};

// A PNG file put together byte by byte, packed without compression.
struct PngFile {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint8_t bits = 8;
    std::uint8_t colorType = 2;         // 0 gray, 2 RGB, 3 palette, 4 gray + alpha, 6 RGB + alpha
    bool interlaced = false;            // rows must then be given for all seven passes
    std::vector<PngChunk> chunks = {};  // before the pixels: PLTE, tRNS, pHYs, gAMA, ...
    std::vector<Bytes> rows = {};       // packed as the format says, without the filter byte
};

void WritePngFile(const std::filesystem::path& path, const PngFile& png);
// Data packed as a zlib stream without compression.
Bytes StoredZlib(const Bytes& data);
Bytes BigEndian32(std::uint32_t value);
// The data of the first chunk of a type in a PNG file, empty when there is none.
Bytes FindPngChunk(const std::filesystem::path& path, const std::string& type);

struct TiffTag {
    std::uint16_t tag = 0;
    std::uint16_t type = 0;  // 1 byte, 2 text, 3 short, 4 long, 5 rational, 7 undefined
    Bytes data;              // in the file's byte order
};

// A TIFF file put together byte by byte.
struct TiffPicture {
    bool bigEndian = false;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t bits = 8;
    std::uint16_t samples = 3;
    std::uint16_t photometric = 2;
    std::uint16_t sampleFormat = 1;
    std::uint16_t planar = 1;
    std::uint16_t compression = 1;  // of the blocks as they are given
    std::uint32_t tileWidth = 0;    // tiles instead of strips when it is not 0
    std::uint32_t tileHeight = 0;
    std::uint32_t rowsPerStrip = 0;  // 0: one strip
    std::vector<TiffTag> tags;       // beside those of the fields above
    std::vector<Bytes> blocks;       // the data of each strip or tile, in the file's byte order
};

void WriteTiffFile(const std::filesystem::path& path, const TiffPicture& tiff);
// Data packed as LZW and as PackBits, in the simplest way that the formats allow.
Bytes SimpleLzw(const Bytes& data);
Bytes SimplePackBits(const Bytes& data);
Bytes Short(const TiffPicture& tiff, std::uint16_t value);
Bytes Long(const TiffPicture& tiff, std::uint32_t value);

// Ready-made pictures. The levels are all different where the type has room for it.
void WriteGradientPng(const std::filesystem::path& path, int width, int height, int channels,
                      int bits);
// Sample (x, y, channel) of such a picture.
std::uint32_t GradientLevel(int x, int y, int channel, int bits);

}  // namespace mv::host::test
