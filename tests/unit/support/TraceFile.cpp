#include "support/TraceFile.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

namespace mv::test {

namespace {

namespace fs = std::filesystem;

class HomeFolder {
public:
    HomeFolder() {
        std::random_device random;
        std::error_code error;
        do {
            path_ = fs::temp_directory_path() / ("radial_blur_test_" + std::to_string(random()));
        } while (!fs::create_directory(path_, error) && !error);
#ifdef _WIN32
        _putenv_s("HOME", path_.string().c_str());
        _putenv_s("HOMEDRIVE", "");
#else
        setenv("HOME", path_.c_str(), 1);
        unsetenv("HOMEDRIVE");
#endif
    }
    ~HomeFolder() {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    const fs::path& Path() const {
        return path_;
    }

private:
    fs::path path_;
};

// Built before the first test: the log remembers its path from its first message on.
const HomeFolder homeFolder;

fs::path LogFile() {
    return homeFolder.Path() / "morvenhale" / "radial_blur_ps.log";
}

}  // namespace

const fs::path& TestFolder() {
    return homeFolder.Path();
}

std::string ReadTextFile(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TraceFile::TraceFile() {
    fs::create_directories(LogFile().parent_path());
    std::ofstream(LogFile(), std::ios::app);
    begin_ = ReadTextFile(LogFile()).size();
}

std::string TraceFile::Text() const {
    return ReadTextFile(LogFile()).substr(begin_);
}

}  // namespace mv::test
