#include "program/Doctor.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "doctor/Examination.h"
#include "pictures/PictureFile.h"
#include "program/CommandLine.h"

namespace mv::host {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kLargestModule = 256U << 20;

constexpr const char* kHelp =
    R"(Looks at a filter module on disk, without running it, and says what is wrong with it.

Usage: radial-blur doctor FILE [--json]

  radial-blur doctor radial_blur.8bf

A module for Windows can be looked at on Linux too, and one for Linux on Windows.

Exit codes
  0  no fault: hosts can use the file     3  the file cannot be read
  2  wrong use of the command line        9  hosts cannot use the file; the report says why
)";

int End(ExitCode code, const std::string& text) {
    std::fputs(("radial-blur: " + text + "\n").c_str(), stderr);
    return static_cast<int>(code);
}

// Empty with a sentence in `problem` when there is nothing to look at.
std::optional<std::vector<std::uint8_t>> ReadFile(const std::string& name, std::string& problem) {
    const fs::path path = PathFromText(name);
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        problem = "there is no such file";
        return {};
    }
    if (fs::is_directory(status)) {
        problem = "it is a folder; name the module in it";
        return {};
    }
    if (!fs::is_regular_file(status)) {
        problem = "it is no ordinary file";
        return {};
    }
    const std::uint64_t size = fs::file_size(path, error);
    if (!error && size > kLargestModule) {
        problem = "it has " + std::to_string(size) + " bytes, far more than any filter module";
        return {};
    }
    std::ifstream stream(path, std::ios::binary);
    std::vector<std::uint8_t> bytes(error ? 0 : static_cast<std::size_t>(size));
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (error || !stream) {
        problem = "the system does not let it be read";
        return {};
    }
    return bytes;
}

}  // namespace

int RunDoctor(const std::vector<std::string>& arguments) {
    bool json = false;
    std::string name;
    for (const std::string& word : arguments) {
        if (word == "--help" || word == "-h") {
            std::fputs(kHelp, stdout);
            return 0;
        }
        if (word == "--json") {
            json = true;
        } else if (word.starts_with("-")) {
            return End(ExitCode::Usage, "doctor has no option '" + word +
                                            "'; 'radial-blur doctor --help' shows how it is used");
        } else if (!name.empty()) {
            return End(ExitCode::Usage, "doctor looks at one file at a time");
        } else {
            name = word;
        }
    }
    if (name.empty()) {
        return End(ExitCode::Usage, "doctor needs a file, such as radial_blur.8bf");
    }
    std::string problem;
    const std::optional<std::vector<std::uint8_t>> bytes = ReadFile(name, problem);
    if (!bytes) {
        return End(ExitCode::CannotRead, "cannot look at '" + name + "': " + problem);
    }
    const Examination examination = Examine(*bytes, PathToText(PathFromText(name).filename()));
    const std::string report =
        json ? ExaminationJson(examination, name) : ExaminationText(examination, name);
    std::fputs(report.c_str(), stdout);
    return static_cast<int>(examination.Count(FindingLevel::Fault) == 0 ? ExitCode::Success
                                                                        : ExitCode::ModuleFault);
}

}  // namespace mv::host
