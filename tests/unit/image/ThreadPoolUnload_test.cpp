#include <gtest/gtest.h>

#include <string>

#include "support/ScopedEnvironment.h"
#include "support/TraceFile.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#include <unistd.h>
#endif

namespace {

using RunPool = int (*)(int, int);

#ifdef _WIN32
std::string ModulePath() {
    char path[4096] = {};
    ::GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string program = path;
    return program.substr(0, program.find_last_of("\\/")) + "\\pool_module.dll";
}

// Runs a job in a freshly loaded module and unloads it; false when anything went wrong.
bool LoadRunUnload(const std::string& path, int threads, int iterations) {
    const HMODULE module = ::LoadLibraryA(path.c_str());
    if (module == nullptr) {
        return false;
    }
    const auto run =
        reinterpret_cast<RunPool>(reinterpret_cast<void*>(::GetProcAddress(module, "RunPool")));
    const bool right =
        run != nullptr && run(threads, iterations) == iterations * (iterations - 1) / 2;
    ::FreeLibrary(module);
    return right && ::GetModuleHandleA(path.c_str()) == nullptr;
}
#else
std::string ModulePath() {
    char path[4096] = {};
    const auto length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    const std::string program(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    return program.substr(0, program.find_last_of('/')) + "/pool_module.so";
}

bool LoadRunUnload(const std::string& path, int threads, int iterations) {
    void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
        return false;
    }
    const auto run = reinterpret_cast<RunPool>(::dlsym(module, "RunPool"));
    const bool right =
        run != nullptr && run(threads, iterations) == iterations * (iterations - 1) / 2;
    ::dlclose(module);
    return right && ::dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD) == nullptr;
}
#endif

// Each load of the module is a first start of its log, which is not to open a window here.
class ThreadPoolUnload : public testing::Test {
    const mv::test::ScopedEnvironment home_{"HOME", (mv::test::TestFolder() / "unused").string()};
};

// The threads live between jobs, do not keep the module in memory, and run none of its code once
// it is gone.
TEST_F(ThreadPoolUnload, ModuleCanBeLoadedUsedAndUnloadedAgainAndAgain) {
    const std::string path = ModulePath();
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(LoadRunUnload(path, 8, 20)) << path << " round " << i;
    }
}

TEST_F(ThreadPoolUnload, ThreadsThatNeverWorkedDoNotHoldTheUnloadUp) {
    const std::string path = ModulePath();
    for (int i = 0; i < 50; ++i) {
        ASSERT_TRUE(LoadRunUnload(path, 8, 1)) << path << " round " << i;
    }
}

TEST_F(ThreadPoolUnload, AFullPoolEndsWithItsModule) {
    ASSERT_TRUE(LoadRunUnload(ModulePath(), 64, 200));
}

}  // namespace
