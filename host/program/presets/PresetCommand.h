// The command "presets": list, show, save, delete.
#pragma once

#include <optional>

#include "program/CommandLine.h"

namespace mv::host {

// Reads the words behind "presets" and checks that the options go with them.
std::optional<Failure> ReadPresetCommand(const std::vector<std::string>& words,
                                         CommandLine& commandLine);

// Does it and writes what it has to tell to `text`.
std::optional<Failure> RunPresetCommand(const CommandLine& commandLine, std::string& text,
                                        std::string& remark);

// The values for a run: those of the preset that was named, if one was, with the ones that were
// given as options in place of its own.
std::optional<Failure> CollectValues(const CommandLine& commandLine, ScriptValues& values);

// For --save-preset: whether it could be done, before the run, and doing it, behind the run. Both
// do nothing where it was not asked for.
std::optional<Failure> CheckSavePreset(const CommandLine& commandLine);
std::optional<Failure> SavePresetOfRun(const CommandLine& commandLine, const ScriptValues& values);

}  // namespace mv::host
