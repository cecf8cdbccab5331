// Loads the module that the command line names, or the one beside the program, and runs the tests.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "Module.h"
#include "RenderJob.h"

namespace {

mv::host::Module& TheModule() {
    static mv::host::Module module;
    return module;
}

std::filesystem::path modulePath;

}  // namespace

namespace endtoend {

hostapi::EntryPoint Entry() {
    return TheModule().GetEntryPoint();
}

const std::filesystem::path& ModulePath() {
    return modulePath;
}

}  // namespace endtoend

int main(int argumentCount, char** arguments) {
    testing::InitGoogleTest(&argumentCount, arguments);
    modulePath =
        argumentCount > 1 ? std::filesystem::path(arguments[1]) : mv::host::DefaultModulePath();
    std::string reason;
    if (!TheModule().Load(modulePath, reason)) {
        std::fprintf(stderr, "%s: %s\n", modulePath.string().c_str(), reason.c_str());
        return 1;
    }
    return RUN_ALL_TESTS();
}
