// The headers of a Linux library, read as data.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "doctor/ByteView.h"

namespace mv::host {

struct ElfImage {
    bool is64Bit = false;
    bool littleEndian = false;
    std::uint16_t type = 0;
    std::uint16_t machine = 0;
    std::uint64_t endOfData = 0;  // how long the headers say that the file is
    bool exportsEntryPoint = false;
    std::vector<std::string> libraries;
};

inline constexpr std::uint16_t kElfShared = 3;
inline constexpr std::uint16_t kElfMachineX64 = 62;

// False when the bytes are no such thing. Of files that are not for this kind of machine only the
// first fields are read.
bool ReadElfImage(ByteView file, ElfImage& image);

}  // namespace mv::host
