#include "program/presets/PresetCommand.h"

#include <algorithm>
#include <utility>

#include "program/Json.h"
#include "program/ParameterTable.h"
#include "program/Report.h"
#include "program/presets/PresetFile.h"

namespace mv::host {
namespace {

struct CommandWord {
    const char* word;
    PresetAction action;
    std::size_t words;  // that must follow, the file among them
};

constexpr CommandWord kCommandWords[] = {{"list", PresetAction::List, 1},
                                         {"show", PresetAction::Show, 1},
                                         {"save", PresetAction::Save, 2},
                                         {"delete", PresetAction::Delete, 2}};

Failure UsageFailure(const std::string& text) {
    return {ExitCode::Usage, text + "; 'radial-blur --help' shows how it is used"};
}

// An option that was given and says how pictures are blurred; null if none was.
const char* OptionOfARun(const CommandLine& commandLine) {
    const std::pair<bool, const char*> options[] = {
        {!commandLine.mask.empty(), "--mask"},
        {!commandLine.outputFolder.empty(), "--out-dir"},
        {!commandLine.savePreset.empty(), "--save-preset"},
        {!commandLine.module.empty(), "--module"},
        {commandLine.skipExisting, "--skip-existing"},
        {commandLine.timing, "--timing"}};
    for (const auto& [given, option] : options) {
        if (given) {
            return option;
        }
    }
    return nullptr;
}

bool IsStandard(const ParameterInfo& parameter, const ScriptValue& value) {
    if (const auto* const number = std::get_if<double>(&value)) {
        return *number == parameter.standard;
    }
    if (const auto* const flag = std::get_if<bool>(&value)) {
        return *flag == (parameter.standard != 0.0);
    }
    const auto* const entry = std::get_if<std::int32_t>(&value);
    return entry != nullptr && *entry == static_cast<std::int32_t>(parameter.standard);
}

// The lines of one preset for people: options as a run takes them, and what is as it always is.
std::string ShowText(const std::string& name, const ScriptValues& values) {
    constexpr std::size_t kColumn = 22;
    std::string text = ShownPresetName(name) + "\n";
    for (const ParameterInfo& parameter : Parameters()) {
        const ScriptValue& value = *FindValue(values, KeyOf(parameter.key));
        const ScriptValue* const second =
            parameter.secondKey.empty() ? nullptr : FindValue(values, KeyOf(parameter.secondKey));
        std::string line = "  " + std::string(parameter.option);
        line.resize(std::max(kColumn, line.size() + 1), ' ');
        line += ValueText(parameter, value);
        bool isStandard = IsStandard(parameter, value);
        if (second != nullptr) {
            line += "," + ValueText(parameter, *second);
            isStandard = isStandard && IsStandard(parameter, *second);
        }
        text += line + (isStandard ? "  (default)\n" : "\n");
    }
    return text;
}

// What all reports begin with.
void BeginReport(const CommandLine& commandLine, JsonWriter& json) {
    json.BeginObject();
    json.Key("file").Text(commandLine.presetFile);
    json.Key("filter").Text(kPresetOwner);
}

std::optional<Failure> List(const CommandLine& commandLine, std::string& text) {
    std::vector<std::string> names;
    if (std::optional<Failure> failure = PresetFile(commandLine.presetFile).ReadNames(names);
        failure) {
        return failure;
    }
    if (!commandLine.json) {
        for (const std::string& name : names) {
            text += name + "\n";
        }
        return {};
    }
    JsonWriter json;
    BeginReport(commandLine, json);
    json.Key("presets").BeginArray();
    for (const std::string& name : names) {
        json.Text(name);
    }
    json.EndArray().EndObject();
    text = json.Take();
    return {};
}

std::optional<Failure> Show(const CommandLine& commandLine, std::string& text) {
    const PresetFile file(commandLine.presetFile);
    std::vector<std::string> names;
    if (!commandLine.presetName.empty()) {
        names.push_back(StoredPresetName(commandLine.presetName));
    } else if (std::optional<Failure> failure = file.ReadNames(names); failure) {
        return failure;
    }
    JsonWriter json;
    BeginReport(commandLine, json);
    json.Key("presets").BeginArray();
    for (const std::string& name : names) {
        ScriptValues values;
        if (std::optional<Failure> failure = file.Load(name, values); failure) {
            return failure;
        }
        json.BeginObject();
        json.Key("name").Text(name);
        WriteValues(json, values);
        json.EndObject();
        text += (text.empty() ? "" : "\n") + ShowText(name, values);
    }
    json.EndArray().EndObject();
    if (commandLine.json) {
        text = json.Take();
    }
    return {};
}

// Does `work` with the preset that --save-preset names; nothing where it was not given.
template <class Work>
std::optional<Failure> WithSavePreset(const CommandLine& commandLine, const Work& work) {
    if (commandLine.savePreset.empty()) {
        return {};
    }
    PresetReference reference;
    if (std::optional<Failure> failure =
            ReadPresetReference("--save-preset", commandLine.savePreset, reference);
        failure) {
        return failure;
    }
    return work(PresetFile(reference.file), reference.preset);
}

// What was done, for both that change the file.
std::string ChangeText(const CommandLine& commandLine, const char* done, const char* where) {
    const std::string name = StoredPresetName(commandLine.presetName);
    if (!commandLine.json) {
        return commandLine.quiet ? ""
                                 : std::string(done) + " '" + ShownPresetName(name) + "' " + where +
                                       " '" + commandLine.presetFile + "'\n";
    }
    JsonWriter json;
    BeginReport(commandLine, json);
    json.Key(done).Text(name);
    json.EndObject();
    return json.Take();
}

}  // namespace

std::optional<Failure> ReadPresetCommand(const std::vector<std::string>& words,
                                         CommandLine& commandLine) {
    const CommandWord* command = nullptr;
    for (const CommandWord& known : kCommandWords) {
        if (!words.empty() && words.front() == known.word) {
            command = &known;
        }
    }
    if (command == nullptr) {
        return UsageFailure(words.empty()
                                ? "'presets' needs a word: list, show, save or delete"
                                : "'presets' knows list, show, save and delete, but not '" +
                                      words.front() + "'");
    }
    const std::string name = std::string("'presets ") + command->word + "'";
    if (words.size() < command->words + 1) {
        return UsageFailure(
            name + (command->words == 1 ? " needs a file" : " needs a file and a preset's name"));
    }
    const std::size_t most = command->action == PresetAction::List ? 2 : 3;
    if (words.size() > most) {
        return UsageFailure(name + " does not know what to do with '" + words[most] + "'");
    }
    if (command->action != PresetAction::Save &&
        (!commandLine.values.empty() || !commandLine.preset.empty() || commandLine.force)) {
        return UsageFailure(name + " takes no values of parameters, no --preset and no --force");
    }
    if (const char* const option = OptionOfARun(commandLine); option != nullptr) {
        return UsageFailure(name + " works on no picture and takes no " + option);
    }
    commandLine.action = Action::Presets;
    commandLine.presetAction = command->action;
    commandLine.presetFile = words[1];
    commandLine.presetName = words.size() > 2 ? words[2] : "";
    if (words.size() > 2 && words[2].empty()) {
        return UsageFailure("a preset needs a name");
    }
    return {};
}

std::optional<Failure> RunPresetCommand(const CommandLine& commandLine, std::string& text,
                                        std::string& remark) {
    const PresetFile file(commandLine.presetFile);
    std::optional<Failure> failure;
    switch (commandLine.presetAction) {
        case PresetAction::List:
            return List(commandLine, text);
        case PresetAction::Show:
            return Show(commandLine, text);
        case PresetAction::Save: {
            ScriptValues values;
            failure = CollectValues(commandLine, values);
            if (!failure) {
                failure = file.Save(commandLine.presetName, values, commandLine.force);
            }
            text = failure ? "" : ChangeText(commandLine, "saved", "in");
            return failure;
        }
        case PresetAction::Delete:
            break;
    }
    failure = file.Delete(commandLine.presetName, remark);
    text = failure ? "" : ChangeText(commandLine, "deleted", "from");
    return failure;
}

std::optional<Failure> CollectValues(const CommandLine& commandLine, ScriptValues& values) {
    if (!commandLine.preset.empty()) {
        PresetReference reference;
        std::optional<Failure> failure =
            ReadPresetReference("--preset", commandLine.preset, reference);
        if (!failure) {
            failure = PresetFile(reference.file).Load(reference.preset, values);
        }
        if (failure) {
            return failure;
        }
    }
    for (const ScriptEntry& entry : commandLine.values) {
        SetValue(values, entry.key, entry.value);
    }
    return {};
}

std::optional<Failure> CheckSavePreset(const CommandLine& commandLine) {
    return WithSavePreset(commandLine, [&](const PresetFile& file, const std::string& preset) {
        return file.CheckSave(preset, commandLine.force);
    });
}

std::optional<Failure> SavePresetOfRun(const CommandLine& commandLine, const ScriptValues& values) {
    return WithSavePreset(commandLine, [&](const PresetFile& file, const std::string& preset) {
        return file.Save(preset, values, commandLine.force);
    });
}

}  // namespace mv::host
