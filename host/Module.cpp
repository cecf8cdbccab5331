#include "Module.h"

#include <system_error>

namespace mv::host {

Module::~Module() {
    Unload();
}

bool Module::Load(const std::filesystem::path& path, std::string& reason) {
    Unload();
    std::error_code error;
    // A name without a folder would be searched for along the library path.
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    if (error || !std::filesystem::exists(absolute, error)) {
        reason = "there is no such file";
        return false;
    }
    if (!Open(absolute, reason)) {
        return false;
    }
    if (entryPoint_ == nullptr) {
        reason = "it is a library that does not export ENTRYPOINT";
        Unload();
        return false;
    }
    return true;
}

void Module::Unload() {
    if (library_ != nullptr) {
        Close();
    }
    library_ = nullptr;
    entryPoint_ = nullptr;
}

std::filesystem::path DefaultModulePath() {
    return ExecutablePath().parent_path() / ModuleFileName();
}

}  // namespace mv::host
