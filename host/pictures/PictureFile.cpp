#include "pictures/PictureFile.h"

#include <array>
#include <cctype>
#include <cstring>
#include <fstream>
#include <new>

#include "pictures/PictureSupport.h"

namespace mv::host {
namespace {

namespace fs = std::filesystem;

using Signature = std::array<char, 12>;

std::string Quoted(const fs::path& path) {
    return "'" + PathToText(path) + "'";
}

bool StartsWith(const Signature& signature, const char* bytes, std::size_t count) {
    return std::memcmp(signature.data(), bytes, count) == 0;
}

bool IsPng(const Signature& signature) {
    return StartsWith(signature, "\x89PNG\r\n\x1a\n", 8);
}

bool IsTiff(const Signature& signature) {
    return StartsWith(signature, "II*\0", 4) || StartsWith(signature, "MM\0*", 4) ||
           StartsWith(signature, "II+\0", 4) || StartsWith(signature, "MM\0+", 4);
}

// Common formats are called by their names, so that the reader knows what to convert.
const char* OtherFormat(const Signature& signature) {
    if (StartsWith(signature, "\xFF\xD8\xFF", 3)) {
        return "a JPEG";
    }
    if (StartsWith(signature, "GIF8", 4)) {
        return "a GIF";
    }
    if (StartsWith(signature, "BM", 2)) {
        return "a BMP";
    }
    if (StartsWith(signature, "RIFF", 4) && std::memcmp(&signature[8], "WEBP", 4) == 0) {
        return "a WebP";
    }
    return nullptr;
}

PictureResult ReadBySignature(const fs::path& path, Picture& picture, const StopFunction& stop) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found) {
        return CannotRead(path, "there is no such file");
    }
    if (status.type() == fs::file_type::directory) {
        return CannotRead(path, "it is a folder");
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return CannotRead(path, "the system does not let this program open it");
    }
    Signature signature{};
    file.read(signature.data(), static_cast<std::streamsize>(signature.size()));
    if (file.bad()) {
        return CannotRead(path, "reading from it fails");
    }
    if (file.gcount() == 0) {
        return Unsupported(path, "is an empty file, not a picture");
    }
    file.close();
    if (IsPng(signature)) {
        return ReadPng(path, picture, stop);
    }
    if (IsTiff(signature)) {
        return ReadTiff(path, picture, stop);
    }
    if (const char* const name = OtherFormat(signature); name != nullptr) {
        return Unsupported(path,
                           std::string("is ") + name + " picture; convert it to PNG or TIFF first");
    }
    return Unsupported(path, "is not a picture; PNG and TIFF files can be read");
}

}  // namespace

fs::path PathFromText(const std::string& text) {
#ifdef _WIN32
    return fs::path(std::u8string(text.begin(), text.end()));
#else
    return fs::path(text);
#endif
}

std::string PathToText(const fs::path& path) {
#ifdef _WIN32
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
#else
    return path.string();
#endif
}

PictureError CannotRead(const fs::path& path, const std::string& why) {
    return {PictureFault::CannotRead, "cannot read " + Quoted(path) + ": " + why};
}

PictureError Unsupported(const fs::path& path, const std::string& what) {
    return {PictureFault::Unsupported, Quoted(path) + " " + what};
}

PictureError CannotWrite(const fs::path& path, const std::string& why) {
    return {PictureFault::CannotWrite, "cannot write " + Quoted(path) + ": " + why};
}

PictureError Stopped(const fs::path& path) {
    return {PictureFault::Stopped, "stopped while working on " + Quoted(path)};
}

PictureResult CheckSize(const fs::path& path, std::uint64_t width, std::uint64_t height) {
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    if (width == 0 || height == 0) {
        return Unsupported(path, "is damaged: its size is " + size + " pixels");
    }
    constexpr auto side = static_cast<std::uint64_t>(kLargestSide);
    if (width > side || height > side) {
        return Unsupported(path, "has " + size + " pixels; the filter takes at most " +
                                     std::to_string(kLargestSide) + " a side, so reduce it first");
    }
    if (width * height > static_cast<std::uint64_t>(kLargestPixelCount)) {
        return Unsupported(path, "has " + size + " pixels; the filter takes at most " +
                                     std::to_string(kLargestPixelCount) +
                                     " in all, so reduce it first");
    }
    return {};
}

PictureResult MakeRoom(const fs::path& path, std::uint64_t width, std::uint64_t height,
                       Picture& picture) {
    if (PictureResult failure = CheckSize(path, width, height); failure) {
        return failure;
    }
    picture.width = static_cast<int>(width);
    picture.height = static_cast<int>(height);
    try {
        picture.samples.resize(picture.RowBytes() * static_cast<std::size_t>(height));
    } catch (const std::bad_alloc&) {
        return Unsupported(path, "has " + std::to_string(width) + " x " + std::to_string(height) +
                                     " pixels, for which there is not enough memory");
    }
    return {};
}

std::optional<FileFormat> FormatOfName(const fs::path& path) {
    std::string ending = PathToText(path.extension());
    for (char& character : ending) {
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }
    if (ending == ".png") {
        return FileFormat::Png;
    }
    if (ending == ".tif" || ending == ".tiff") {
        return FileFormat::Tiff;
    }
    return {};
}

PictureResult ReadPicture(const fs::path& path, Picture& picture, const StopFunction& stop) {
    try {
        picture = {};
        return ReadBySignature(path, picture, stop);
    } catch (const std::bad_alloc&) {
        return Unsupported(path, "needs more memory than there is");
    }
}

PictureResult CheckTarget(const fs::path& path, SampleType type) {
    const std::optional<FileFormat> format = FormatOfName(path);
    if (!format) {
        return CannotWrite(path, "its name must end in .png, .tif or .tiff");
    }
    if (format == FileFormat::Png && type == SampleType::Float32) {
        return PictureError{PictureFault::Unsupported,
                            "cannot write " + Quoted(path) +
                                ": PNG holds no float samples; give the output a name in .tif"};
    }
    fs::path resolved;
    std::string why;
    if (!ResolveTarget(path, resolved, why)) {
        return CannotWrite(path, why);
    }
    return {};
}

PictureResult WritePicture(const fs::path& path, const Picture& picture, const StopFunction& stop) {
    if (PictureResult failure = CheckTarget(path, picture.type); failure) {
        return failure;
    }
    try {
        AtomicFile file;
        std::string why;
        if (!file.Open(path, why)) {
            return CannotWrite(path, why);
        }
        PictureResult failure = FormatOfName(path) == FileFormat::Png
                                    ? WritePng(path, file, picture, stop)
                                    : WriteTiff(path, file, picture, stop);
        if (failure) {
            return failure;
        }
        if (stop && stop()) {
            return Stopped(path);
        }
        if (!file.Commit(why)) {
            return CannotWrite(path, why);
        }
        return {};
    } catch (const std::bad_alloc&) {
        return CannotWrite(path, "there is not enough memory");
    }
}

}  // namespace mv::host
