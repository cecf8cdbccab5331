#include "pictures/AtomicFile.h"

#include "pictures/PictureFile.h"

namespace mv::host {

namespace fs = std::filesystem;

bool ResolveTarget(const fs::path& target, fs::path& resolved, std::string& why) {
    std::error_code error;
    resolved = target;
    if (fs::is_symlink(fs::symlink_status(target, error))) {
        resolved = fs::weakly_canonical(target, error);
        if (error) {
            why = "the link cannot be followed";
            return false;
        }
    }
    const fs::file_status status = fs::status(resolved, error);
    if (status.type() == fs::file_type::directory) {
        why = "it is a folder";
        return false;
    }
    if (fs::exists(status) && status.type() != fs::file_type::regular) {
        why = "it is no ordinary file";
        return false;
    }
    const fs::path folder = resolved.parent_path();
    if (!folder.empty() && !fs::is_directory(folder, error)) {
        why = fs::exists(folder, error)
                  ? "'" + PathToText(folder) + "' is not a folder"
                  : "the folder '" + PathToText(folder) + "' does not exist; create it first";
        return false;
    }
    return true;
}

std::string TemporaryName(unsigned long process, unsigned attempt) {
    return ".radial-blur-" + std::to_string(process) + "-" + std::to_string(attempt) + ".tmp";
}

}  // namespace mv::host
