#include <dlfcn.h>

#include <system_error>

#include "Module.h"

namespace mv::host {

bool Module::Open(const std::filesystem::path& absolute, std::string& reason) {
    library_ = dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library_ == nullptr) {
        const char* const text = dlerror();
        reason = text != nullptr ? text : "it cannot be loaded";
        return false;
    }
    entryPoint_ = reinterpret_cast<hostapi::EntryPoint>(dlsym(library_, "ENTRYPOINT"));
    return true;
}

void Module::Close() {
    dlclose(library_);
}

const char* ModuleFileName() {
    return "radial_blur.so";
}

std::filesystem::path ExecutablePath() {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : path;
}

}  // namespace mv::host
