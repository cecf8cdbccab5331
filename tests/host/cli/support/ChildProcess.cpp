#include "support/ChildProcess.h"

#include "Module.h"
#include "pictures/PictureFile.h"

namespace mv::host::test {
namespace {

#ifdef _WIN32
constexpr const char* kProgramName = "radial-blur.exe";
constexpr const char* kFakeName = "fake_filter.8bf";
#else
constexpr const char* kProgramName = "radial-blur";
constexpr const char* kFakeName = "fake_filter.so";
#endif

}  // namespace

// The tests stand in tests/host/cli of the build folder.
std::filesystem::path BuiltProgram() {
    return ExecutablePath().parent_path() / ".." / ".." / ".." / kProgramName;
}

std::filesystem::path FakeModule() {
    return ExecutablePath().parent_path() / kFakeName;
}

ProgramRun RunRadialBlur(std::vector<std::string> arguments, const RunOptions& options) {
    const std::filesystem::path program = options.program.value_or(BuiltProgram());
    arguments.insert(arguments.begin(), PathToText(program));
    const std::filesystem::path module = options.module.value_or(FakeModule());
    if (!module.empty()) {
        arguments.push_back("--module");
        arguments.push_back(PathToText(module));
    }
    SetFakeWords(options.fake);
    return RunChild(arguments, options);
}

}  // namespace mv::host::test
