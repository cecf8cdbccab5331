// What the user asked for.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ScriptValues.h"
#include "program/ExitCode.h"

namespace mv::host {

// Why something was not done: one sentence for the user, and how the program ends.
struct Failure {
    ExitCode code = ExitCode::Internal;
    std::string text;
};

enum class Action { Render, ShowHelp, ShowVersion, ListParameters, Presets };
enum class PresetAction { List, Show, Save, Delete };

struct CommandLine {
    Action action = Action::Render;
    std::vector<std::string> inputs;
    std::string output;        // of the only input, when there is no folder
    std::string outputFolder;  // the inputs keep their names in it
    std::string mask;
    std::string module;      // empty: the one beside the program
    ScriptValues values;     // of the parameters that were given
    std::string preset;      // FILE:NAME whose values stand in for those that were not given
    std::string savePreset;  // FILE:NAME that keeps the values of the run
    bool force = false;      // a preset of the same name may be replaced
    PresetAction presetAction = PresetAction::List;
    std::string presetFile;
    std::string presetName;  // may be empty where all are meant
    bool timing = false;
    bool json = false;
    bool quiet = false;
    bool skipExisting = false;
};

// `arguments` are the words behind the program's name, in UTF-8 on Windows.
std::optional<Failure> ReadCommandLine(std::vector<std::string> arguments, CommandLine& result);

std::string HelpText();

}  // namespace mv::host
