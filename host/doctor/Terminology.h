// The scripting terminology of a filter module, and its version resource.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "doctor/ByteView.h"

namespace mv::host {

struct Terminology {
    bool whole = false;  // everything that it announces is there
    std::string suite;
    std::string event;
    std::string eventClass;
    std::vector<std::string> parameters;  // "strength (STRE, number)"
};
Terminology ReadTerminology(ByteView data);

struct VersionInfo {
    std::string fileVersion;  // of the fixed part; empty when there is none
    std::vector<std::pair<std::string, std::string>> texts;

    std::string Text(const std::string& name) const;
};
VersionInfo ReadVersionInfo(ByteView data);

}  // namespace mv::host
