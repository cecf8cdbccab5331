#include <dlfcn.h>

#include <system_error>

#include "Module.h"

namespace mv::host {

Module::~Module() {
    Unload();
}

bool Module::Load(const std::filesystem::path& path, std::string& reason) {
    Unload();
    std::error_code error;
    // A name without a slash would be searched for along the library path.
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    if (error || !std::filesystem::exists(absolute, error)) {
        reason = "there is no such file";
        return false;
    }
    library_ = dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library_ == nullptr) {
        const char* const text = dlerror();
        reason = text != nullptr ? text : "it cannot be loaded";
        return false;
    }
    entryPoint_ = reinterpret_cast<hostapi::EntryPoint>(dlsym(library_, "ENTRYPOINT"));
    if (entryPoint_ == nullptr) {
        reason = "it is a library that does not export ENTRYPOINT";
        Unload();
        return false;
    }
    return true;
}

void Module::Unload() {
    if (library_ != nullptr) {
        dlclose(library_);
    }
    library_ = nullptr;
    entryPoint_ = nullptr;
}

const char* ModuleFileName() {
    return "radial_blur.so";
}

std::filesystem::path ExecutablePath() {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : path;
}

std::filesystem::path DefaultModulePath() {
    return ExecutablePath().parent_path() / ModuleFileName();
}

}  // namespace mv::host
