#include "program/presets/SystemText.h"

namespace mv::host {

std::optional<std::string> ToSystemPath(const std::string& path, bool) {
    return path;
}

std::string ToSystemText(const std::string& text) {
    return text;
}

std::string FromSystemText(const std::string& text) {
    return text;
}

bool BeginsWithDrive(const std::string&) {
    return false;
}

}  // namespace mv::host
