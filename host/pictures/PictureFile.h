// Picture files: PNG and TIFF, read by their signature and written by the name's ending.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "pictures/Picture.h"

namespace mv::host {

enum class PictureFault {
    CannotRead,   // no such file, no rights, the disk
    Unsupported,  // not a picture, damaged, or of a kind that is not served
    CannotWrite,  // no such folder, no rights, a full disk
    Stopped,      // the stop function said so
};

// One sentence that says what was wrong and what to do, with the file's name in it.
struct PictureError {
    PictureFault fault = PictureFault::Unsupported;
    std::string text;
};

using PictureResult = std::optional<PictureError>;  // empty: all is well
using StopFunction = std::function<bool()>;         // asked every few rows; may be empty

enum class FileFormat { Png, Tiff };

// The format that a name's ending asks for: .png, .tif, .tiff in upper or lower case.
std::optional<FileFormat> FormatOfName(const std::filesystem::path& path);

PictureResult ReadPicture(const std::filesystem::path& path, Picture& picture,
                          const StopFunction& stop = {});

// Writes beside the target and takes its place in one step at the end, so that an existing file
// stays as it was on any failure. PNG holds no float samples.
PictureResult WritePicture(const std::filesystem::path& path, const Picture& picture,
                           const StopFunction& stop = {});

// What WritePicture would refuse before it writes a byte, to be known before a long computation.
PictureResult CheckTarget(const std::filesystem::path& path, SampleType type);

// Names travel as UTF-8 on Windows and as the bytes that they are elsewhere.
std::filesystem::path PathFromText(const std::string& text);
std::string PathToText(const std::filesystem::path& path);

}  // namespace mv::host
