// The property list by which hosts find a filter module and learn what it is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "doctor/ByteView.h"

namespace mv::host {

// The properties that are understood, in words; what the list lacks is empty.
struct PropertyList {
    std::string kind;      // the four letters
    std::string name;      // as it stands in the menu
    std::string category;  // the submenu
    std::string version;   // of the interface
    std::string entryPoint64;
    std::string entryPoint32;
    std::vector<std::string> modes;  // "gray scale", "RGB", ...
    std::string layerSupport;
    std::string terminology;  // "class MC01, event null, AETE 16000, scope ..."
    std::string enableRule;
    std::vector<std::string> cases;    // "flat image, no selection: as it is", ...
    std::vector<std::string> strange;  // properties that were not understood
    std::uint32_t promised = 0;        // how many the list says that it holds
    std::uint32_t found = 0;
};

// Reads as many properties as are there.
PropertyList ReadPropertyList(ByteView data);

// What the four letters of a module's kind mean, such as "a filter".
std::string KindWords(const std::string& kind);

}  // namespace mv::host
