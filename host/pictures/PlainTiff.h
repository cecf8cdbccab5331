// A TIFF writer without a library and without packing, for shapes that a system's own writer lacks.
#pragma once

#include "pictures/AtomicFile.h"
#include "pictures/PictureFile.h"

namespace mv::host {

// Writes one strip in the machine's byte order, which is little-endian. Pictures of 4 GiB and more
// do not fit into the format's offsets and are refused.
PictureResult WritePlainTiff(const std::filesystem::path& path, AtomicFile& file,
                             const Picture& picture, const StopFunction& stop);

}  // namespace mv::host
