// TIFF files without a library: their tags, and pixels that are not packed. For systems whose own
// imaging component does not know some shapes, or gives away too little about a file.
#pragma once

#include <vector>

#include "pictures/AtomicFile.h"
#include "pictures/PictureFile.h"
#include "pictures/TiffLayout.h"

namespace mv::host {

// What the tags of the first picture in a file say.
struct TiffFacts {
    bool bigEndian = false;
    TiffLayout layout;
    std::vector<std::uint32_t> blockOffsets;
    std::vector<std::uint32_t> blockSizes;
    std::vector<std::uint8_t> iccProfile;
    std::optional<Resolution> resolution;
};

PictureResult ReadTiffFacts(const std::filesystem::path& path, TiffFacts& facts);

// Reads the pixels of a file that is not packed; the picture was judged and has its room.
PictureResult ReadPlainTiff(const std::filesystem::path& path, const TiffFacts& facts,
                            Picture& picture, const StopFunction& stop);

// Writes one strip in the machine's byte order, which is little-endian. Pictures of 4 GiB and more
// do not fit into the format's offsets and are refused.
PictureResult WritePlainTiff(const std::filesystem::path& path, AtomicFile& file,
                             const Picture& picture, const StopFunction& stop);

}  // namespace mv::host
