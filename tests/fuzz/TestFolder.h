// A folder of this process's own, in memory where the system has such a place.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "FuzzTarget.h"

namespace fuzzing {

// Made and removed with the object; one thread.
class TestFolder {
public:
    TestFolder() {
        std::error_code error;
        const std::filesystem::path memory = "/dev/shm";
        const bool usable =
            std::filesystem::is_directory(memory, error) && access(memory.c_str(), W_OK) == 0;
        std::string pattern =
            ((usable ? memory : std::filesystem::temp_directory_path()) / "radial_blur_fuzz_XXXXXX")
                .string();
        Require(mkdtemp(pattern.data()) != nullptr, "a temporary folder can be made");
        path_ = pattern;
    }
    ~TestFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::string File(const char* name) const { return path_ + "/" + name; }

    static void Write(const std::string& path, std::string_view content) {
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        Require(file >= 0 && write(file, content.data(), content.size()) ==
                                 static_cast<ssize_t>(content.size()),
                "a file in memory can be written");
        close(file);
    }

private:
    std::string path_;
};

}  // namespace fuzzing
