// What the readers and writers of the file formats have in common.
#pragma once

#include <string>

#include "pictures/AtomicFile.h"
#include "pictures/PictureFile.h"

namespace mv::host {

PictureError CannotRead(const std::filesystem::path& path, const std::string& why);
PictureError Unsupported(const std::filesystem::path& path, const std::string& what);
PictureError CannotWrite(const std::filesystem::path& path, const std::string& why);
PictureError Stopped(const std::filesystem::path& path);

// Of a file that cannot hold the pixels that it claims to have.
constexpr const char* kTooSmall = "it is far too small for the size that it states";

// Refuses sizes that the filter interface cannot carry or that no picture has.
PictureResult CheckSize(const std::filesystem::path& path, std::uint64_t width,
                        std::uint64_t height);
// Checks the size, then makes room for the samples.
PictureResult MakeRoom(const std::filesystem::path& path, std::uint64_t width, std::uint64_t height,
                       Picture& picture);

// The readers and writers of this platform.
PictureResult ReadPng(const std::filesystem::path& path, Picture& picture,
                      const StopFunction& stop);
PictureResult ReadTiff(const std::filesystem::path& path, Picture& picture,
                       const StopFunction& stop);
PictureResult WritePng(const std::filesystem::path& path, AtomicFile& file, const Picture& picture,
                       const StopFunction& stop);
PictureResult WriteTiff(const std::filesystem::path& path, AtomicFile& file, const Picture& picture,
                        const StopFunction& stop);

}  // namespace mv::host
