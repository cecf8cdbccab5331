// How the program ends.
#pragma once

namespace mv::host {

enum class ExitCode : int {
    Success = 0,
    Internal = 1,            // something that should not happen
    Usage = 2,               // an option, a value or a combination that makes no sense
    CannotRead = 3,          // no such file, no rights
    UnsupportedPicture = 4,  // not a picture, damaged, or of a kind that is not served
    MaskMismatch = 5,        // the mask has another size than the picture
    CannotWrite = 6,         // no such folder, no rights, a full disk
    ModuleProblem = 7,       // the filter module is missing or cannot be loaded
    RenderFailed = 8,        // the module reports an error, such as too little memory
    ModuleFault = 9,         // doctor: hosts cannot use the file
    NoSuchPreset = 10,       // the preset file holds none of that name
    NoPresetFile = 11,       // the file holds something else, or another filter's presets
    PresetExists = 12,       // it would be replaced, which was not asked for
    Aborted = 130,           // Ctrl-C
};

}  // namespace mv::host
