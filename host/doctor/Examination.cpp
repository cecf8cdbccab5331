#include "doctor/Examination.h"

#include <algorithm>

#include "doctor/ElfImage.h"
#include "doctor/PeExamination.h"

namespace mv::host {
namespace {

constexpr const char* kTakeModule = "give the file radial_blur.8bf itself";

bool Starts(const ByteView& file, std::string_view letters) {
    const auto part = file.Part(0, letters.size());
    return part &&
           std::equal(letters.begin(), letters.end(), part->Bytes().begin(),
                      [](char a, std::uint8_t b) { return static_cast<unsigned char>(a) == b; });
}

bool LooksLikeText(const ByteView& file) {
    constexpr std::size_t kEnough = 4096;
    const std::span<const std::uint8_t> bytes = file.Bytes();
    const auto sample = bytes.first(std::min(bytes.size(), kEnough));
    return std::none_of(sample.begin(), sample.end(), [](std::uint8_t byte) {
        return byte < ' ' && byte != '\t' && byte != '\n' && byte != '\r' && byte != '\f';
    });
}

void ExamineStranger(const ByteView& file, Examination& result) {
    struct Stranger {
        std::string_view start;
        const char* kind;
        const char* advice;
    };
    using namespace std::string_view_literals;
    static constexpr Stranger kStrangers[] = {
        {"PK\x03\x04"sv, "a ZIP archive", "unpack it and give the .8bf file in it"},
        {"\x1F\x8B"sv, "a packed archive", "unpack it and give the .8bf file in it"},
        {"7z\xBC\xAF"sv, "a packed archive", "unpack it and give the .8bf file in it"},
        {"Rar!"sv, "a packed archive", "unpack it and give the .8bf file in it"},
        {"\x89PNG"sv, "a picture", kTakeModule},
        {"\xFF\xD8\xFF"sv, "a picture", kTakeModule},
        {"II*\0"sv, "a picture", kTakeModule},
        {"MM\0*"sv, "a picture", kTakeModule},
        {"%PDF"sv, "a PDF document", kTakeModule},
        {"\xCF\xFA\xED\xFE"sv, "a file for macOS", "get the module for Windows"},
        {"\xCA\xFE\xBA\xBE"sv, "a file for macOS", "get the module for Windows"},
    };
    for (const Stranger& stranger : kStrangers) {
        if (Starts(file, stranger.start)) {
            result.kind = stranger.kind;
            result.Add(FindingLevel::Fault, "it is " + result.kind + ", not a filter module",
                       stranger.advice);
            return;
        }
    }
    if (file.Size() == 0) {
        result.kind = "an empty file";
        result.Add(FindingLevel::Fault, "it is empty", "the download failed; get it again");
    } else if (Starts(file, "MZ")) {
        result.kind = "a broken or very old Windows file";
        result.Add(FindingLevel::Fault,
                   "it starts like a Windows file, but the headers of one are not there",
                   "the download was cut off, or it is a module of the 16-bit days; get it again");
    } else if (LooksLikeText(file)) {
        const bool page = Starts(file, "<");
        result.kind = page ? "a page of the web" : "a text";
        result.Add(
            FindingLevel::Fault, "it is " + result.kind + ", not a filter module",
            page ? "the download gave a page in place of the file; get it again" : kTakeModule);
    } else {
        result.kind = "a file of another kind";
        result.Add(FindingLevel::Fault, "it is not a filter module, nor anything known here",
                   kTakeModule);
    }
}

void ExamineLinuxFile(const ElfImage& image, std::uint64_t size, std::string_view fileName,
                      Examination& result) {
    const bool forUs = image.is64Bit && image.littleEndian && image.machine == kElfMachineX64;
    result.kind = "a file for Linux";
    if (!forUs) {
        result.Add(FindingLevel::Fault, "it is made for another processor than x86-64",
                   "get the module for x86-64");
        return;
    }
    if (size < image.endOfData) {
        result.Add(FindingLevel::Fault,
                   "it ends early: it has " + std::to_string(size) +
                       " bytes, and its headers speak of more",
                   "the copy or the download was cut off; get it again");
    }
    if (image.type != kElfShared || !image.exportsEntryPoint) {
        result.Add(FindingLevel::Fault, "it does not export ENTRYPOINT, so it is no filter module",
                   "give the file radial_blur.so itself");
        return;
    }
    result.kind = "a filter module for 64-bit Linux";
    result.State("needs", "Needs", image.libraries);
    result.Add(FindingLevel::Good, "it exports ENTRYPOINT, which hosts call");
    if (HasEnding(fileName, ".8bf")) {
        result.Add(FindingLevel::Fault, "its name is that of a Windows module, but it is for Linux",
                   "editors on Windows need the file from the win64 archive");
    } else {
        result.Add(FindingLevel::Note, "it is for radial-blur on Linux",
                   "an editor on Windows needs radial_blur.8bf");
    }
}

}  // namespace

std::size_t Examination::Count(FindingLevel level) const {
    return static_cast<std::size_t>(
        std::count_if(findings.begin(), findings.end(),
                      [level](const Finding& finding) { return finding.level == level; }));
}

Examination Examine(std::span<const std::uint8_t> bytes, std::string_view fileName) {
    Examination result;
    const ByteView file(bytes);
    result.State("bytes", "Size", {std::to_string(file.Size()) + " bytes"});
    PeImage windows;
    ElfImage linuxImage;
    if (ReadPeImage(file, windows)) {
        ExamineWindowsFile(windows, fileName, result);
    } else if (ReadElfImage(file, linuxImage)) {
        ExamineLinuxFile(linuxImage, file.Size(), fileName, result);
    } else {
        ExamineStranger(file, result);
    }
    return result;
}

}  // namespace mv::host
