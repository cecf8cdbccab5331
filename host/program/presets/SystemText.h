// Paths and names as the module's preset files have them: in the character set of the system, which
// on Windows is not that of the command line.
#pragma once

#include <optional>
#include <string>

namespace mv::host {

// The path for functions that take one in the system's character set; empty if there is none.
// `toWrite` is for a file that may be replaced, whose name must be kept.
std::optional<std::string> ToSystemPath(const std::string& path, bool toWrite);

// A name that the system's character set lacks is left as it is.
std::string ToSystemText(const std::string& text);
// Text that is UTF-8 already is left as it is.
std::string FromSystemText(const std::string& text);

// Whether a path begins with a drive's letter and colon.
bool BeginsWithDrive(const std::string& path);

}  // namespace mv::host
