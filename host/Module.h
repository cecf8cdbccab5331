// A filter module on disk, loaded at run time.
#pragma once

#include <filesystem>
#include <string>

#include "hostapi/HostApi.h"

namespace mv::host {

// The loaded library, unloaded with the object; sessions on its entry point must be gone by then.
class Module {
public:
    Module() = default;
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    ~Module();

    // False with a sentence in `reason` when the file is missing, cannot be loaded, or does not
    // export ENTRYPOINT.
    bool Load(const std::filesystem::path& path, std::string& reason);
    void Unload();
    hostapi::EntryPoint GetEntryPoint() const { return entryPoint_; }

private:
    // The system's part. Open finds the entry point too, which is null when there is none.
    bool Open(const std::filesystem::path& absolute, std::string& reason);
    void Close();

    void* library_ = nullptr;
    hostapi::EntryPoint entryPoint_ = nullptr;
};

// "radial_blur.so" or "radial_blur.8bf".
const char* ModuleFileName();
// The file of the running program, empty when the system does not say.
std::filesystem::path ExecutablePath();
// The module beside the running program.
std::filesystem::path DefaultModulePath();

}  // namespace mv::host
