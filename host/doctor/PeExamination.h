// The part of an examination that is for Windows files.
#pragma once

#include <string_view>

#include "doctor/Examination.h"
#include "doctor/PeImage.h"

namespace mv::host {

// Adds facts and findings, and names the kind of file.
void ExamineWindowsFile(const PeImage& image, std::string_view fileName, Examination& result);

// Whether a name ends so, in upper or lower case.
bool HasEnding(std::string_view name, std::string_view ending);

}  // namespace mv::host
