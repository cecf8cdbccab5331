// Windows modules put together byte by byte, sound or broken on purpose.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/TestFiles.h"

namespace mv::host::test {

struct ModuleResource {
    std::string type;      // a name; empty for a number
    std::uint32_t number;  // 16 is that of the version resource
    Bytes data;
};

// The default is a sound filter module.
struct ModuleFile {
    std::uint16_t machine = 0x8664;
    bool wide = true;  // the headers of a 64-bit file
    std::uint16_t flags = 0x2022;
    std::uint16_t protections = 0x0160;
    std::vector<std::string> exports = {"ENTRYPOINT"};
    std::vector<std::string> imports = {"KERNEL32.dll", "USER32.dll"};
    std::vector<ModuleResource> resources;
    Bytes signature;     // with its eight bytes of header
    bool summed = true;  // false leaves the check sum at 0

    ModuleFile();
    Bytes Build() const;
};

// The value of a property list's member in little-endian order, and a list of such members.
struct Property {
    std::string key;
    Bytes value;
};
Bytes PropertyListBytes(const std::vector<Property>& properties);
std::vector<Property> SoundProperties();
Bytes TerminologyBytes();
Bytes VersionBytes();
Bytes Pascal(const std::string& text);
Bytes Reversed(const std::string& code);

}  // namespace mv::host::test
