// A preset file as the command line uses it: the module's own operations, with a sentence for the
// user where these only say no, or nothing.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ScriptValues.h"
#include "program/CommandLine.h"

namespace mv::host {

// The name that stands in the first line of this filter's preset files.
inline constexpr const char* kPresetOwner = "RadialBlur";

// One file, named by the user; nothing of it is kept between calls. What fails leaves the file as
// it was.
class PresetFile {
public:
    // `name` is a path as the user wrote it, in UTF-8 on Windows.
    explicit PresetFile(std::string name) : name_(std::move(name)) {}

    // The presets in the order of the file, as text to show.
    std::optional<Failure> ReadNames(std::vector<std::string>& names) const;
    // All values that the preset gives, with the defaults for those that it leaves out.
    std::optional<Failure> Load(const std::string& preset, ScriptValues& values) const;
    // Whether a preset could be saved under this name, as far as that can be told beforehand.
    std::optional<Failure> CheckSave(const std::string& preset, bool replace) const;
    // Saves the defaults with the values in place of them.
    std::optional<Failure> Save(const std::string& preset, const ScriptValues& values,
                                bool replace) const;
    // `remark` is what the user should know besides, mostly nothing.
    std::optional<Failure> Delete(const std::string& preset, std::string& remark) const;

private:
    struct Entry {
        std::string stored;  // as it stands in the file
        std::string shown;
    };
    using Entries = std::vector<Entry>;

    std::optional<Failure> FindPath(std::string& path) const;
    std::optional<Failure> Inspect(bool mayBeMissing, std::string& path, Entries& entries) const;
    std::optional<Failure> Find(const std::string& preset, std::string& path,
                                std::string& stored) const;
    std::optional<Failure> PrepareSave(const std::string& preset, bool replace, std::string& path,
                                       std::string& stored) const;
    std::optional<Failure> FailureToWrite() const;
    Failure NoSuchPreset(const std::string& preset, const Entries& entries) const;

    std::string name_;
};

// FILE:NAME as an option has it.
struct PresetReference {
    std::string file;
    std::string preset;
};

// `option` is the word with its dashes. A colon of a drive is no separator, and of several colons
// the first one counts that has a file in front of it.
std::optional<Failure> ReadPresetReference(std::string_view option, const std::string& text,
                                           PresetReference& result);

// The name as it is stored: blanks become underscores.
std::string StoredPresetName(std::string name);

// Without characters that a terminal could take for orders, and cut to a length that can be read.
std::string ShownPresetName(const std::string& name);

}  // namespace mv::host
