// The headers of a Windows library or program, read as data.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "doctor/ByteView.h"

namespace mv::host {

struct PeSection {
    std::uint64_t address = 0;  // where it lies in memory, from the start of the image
    std::uint64_t memorySize = 0;
    std::uint64_t fileOffset = 0;
    std::uint64_t fileSize = 0;
};

// What is known of the file. Belongs to one examination; the bytes stay the caller's.
struct PeImage {
    ByteView file;
    std::uint64_t header = 0;  // offset of the "PE" signature
    std::uint16_t machine = 0;
    std::uint16_t flags = 0;
    std::uint16_t protections = 0;
    bool is64Bit = false;  // by the optional header
    std::uint32_t checkSum = 0;
    std::uint64_t endOfData = 0;  // how long the headers say that the file is at least
    std::vector<PeSection> sections;

    struct Directory {
        std::uint32_t address = 0;  // of the signature: a file offset
        std::uint32_t size = 0;
    };
    std::vector<Directory> directories;

    Directory DirectoryAt(std::size_t index) const {
        return index < directories.size() ? directories[index] : Directory{};
    }
    // The bytes in the file behind a place in memory, up to the end of its section.
    ByteView AtAddress(std::uint64_t address) const;
};

inline constexpr std::size_t kExportDirectory = 0;
inline constexpr std::size_t kImportDirectory = 1;
inline constexpr std::size_t kResourceDirectory = 2;
inline constexpr std::size_t kSignatureDirectory = 4;
inline constexpr std::size_t kDelayImportDirectory = 13;

inline constexpr std::uint16_t kMachineX64 = 0x8664;
inline constexpr std::uint16_t kMachineX86 = 0x014C;
inline constexpr std::uint16_t kMachineArm64 = 0xAA64;
inline constexpr std::uint16_t kFlagFixedAddress = 0x0001;
inline constexpr std::uint16_t kFlagLibrary = 0x2000;
inline constexpr std::uint16_t kProtectHighEntropy = 0x0020;
inline constexpr std::uint16_t kProtectDynamicBase = 0x0040;
inline constexpr std::uint16_t kProtectNoExecute = 0x0100;

// False when the headers are no such thing or end early.
bool ReadPeImage(ByteView file, PeImage& image);

std::vector<std::string> ReadExports(const PeImage& image);
// The libraries that must be found before the module can be loaded, in the file's order.
std::vector<std::string> ReadImports(const PeImage& image);
// What the check sum should be.
std::uint32_t ComputeCheckSum(const PeImage& image);

struct PeResource {
    std::string type;  // its name, or "#16" for one with a number
    std::string name;
    ByteView data;
};
std::vector<PeResource> ReadResources(const PeImage& image);

}  // namespace mv::host
