#include "program/presets/PresetFile.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <list>

#include "parameters/PresetText.h"
#include "pictures/PictureFile.h"
#include "platform/FileReplace.h"
#include "program/presets/PresetParameters.h"
#include "program/presets/SystemText.h"

namespace mv::host {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestShownName = 60;
constexpr std::size_t kMostShownNames = 20;

bool IsBlank(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

bool EndsWithCfg(const std::string& file) {
    std::string ending = file.substr(file.size() - std::min<std::size_t>(4, file.size()));
    for (char& character : ending) {
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }
    return ending == ".cfg";
}

std::string Quoted(const std::string& text) {
    return "'" + text + "'";
}

// Whether a removal ends the copy early, at a byte 0xFF outside of what is removed.
bool IsCutByRemoval(const std::string& path, const std::string& stored) {
    std::string content;
    std::string cut;
    std::string whole;
    if (ReadWholeFile(path, content) != FileRead::Done || !RemovePreset(content, stored, cut)) {
        return false;
    }
    std::string name = stored;
    std::replace(content.begin(), content.end(), '\xFF', '?');
    std::replace(name.begin(), name.end(), '\xFF', '?');
    return RemovePreset(content, name, whole) && whole.size() > cut.size();
}

// Words of the format cannot be names: the file would fall apart at them.
std::optional<Failure> CheckName(const std::string& stored) {
    if (stored.empty()) {
        return Failure{ExitCode::Usage, "a preset needs a name"};
    }
    if (stored == "name" || stored == "FileOwner") {
        return Failure{ExitCode::Usage, "a preset cannot be called '" + stored +
                                            "', which is a word of the file format; choose "
                                            "another name"};
    }
    return {};
}

}  // namespace

std::string StoredPresetName(std::string name) {
    std::replace_if(name.begin(), name.end(), IsBlank, '_');
    return name;
}

std::string ShownPresetName(const std::string& name) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string result;
    for (const char character : name) {
        const auto byte = static_cast<unsigned char>(character);
        if (result.size() >= kLongestShownName && (byte & 0xC0) != 0x80) {
            return result + "...";
        }
        if (byte < 0x20 || byte == 0x7F) {
            result.append("\\x").append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
        } else {
            result += character;
        }
    }
    return result;
}

std::optional<Failure> ReadPresetReference(std::string_view option, const std::string& text,
                                           PresetReference& result) {
    std::size_t chosen = std::string::npos;
    std::size_t last = std::string::npos;
    for (std::size_t at = text.find(':', BeginsWithDrive(text) ? 2 : 0); at != std::string::npos;
         at = text.find(':', at + 1)) {
        std::error_code error;
        if (chosen == std::string::npos && fs::exists(PathFromText(text.substr(0, at)), error)) {
            chosen = at;
        }
        last = at;
    }
    // Without a file there is only its usual ending to go by.
    for (std::size_t at = text.find(':'); chosen == std::string::npos && at != std::string::npos;
         at = text.find(':', at + 1)) {
        chosen = EndsWithCfg(text.substr(0, at)) ? at : chosen;
    }
    chosen = chosen == std::string::npos ? last : chosen;
    if (chosen == std::string::npos || chosen == 0 || chosen + 1 == text.size()) {
        return Failure{ExitCode::Usage, std::string(option) + ": '" + text +
                                            "' names no preset; give FILE:NAME like "
                                            "looks.cfg:soft_glow"};
    }
    result = {text.substr(0, chosen), text.substr(chosen + 1)};
    return {};
}

Failure PresetFile::NoSuchPreset(const std::string& preset, const Entries& entries) const {
    std::string text = "there is no preset " + Quoted(ShownPresetName(preset)) + " in " +
                       Quoted(name_) + "; it holds ";
    if (entries.empty()) {
        return {ExitCode::NoSuchPreset, text + "no presets"};
    }
    for (std::size_t i = 0; i < entries.size() && i < kMostShownNames; ++i) {
        text += (i == 0 ? "" : ", ") + ShownPresetName(entries[i].shown);
    }
    if (entries.size() > kMostShownNames) {
        text += " and " + std::to_string(entries.size() - kMostShownNames) + " more";
    }
    return {ExitCode::NoSuchPreset, text};
}

std::optional<Failure> PresetFile::FindPath(std::string& path) const {
    const std::optional<std::string> found = ToSystemPath(name_, false);
    if (!found) {
        return Failure{ExitCode::CannotRead,
                       "there is no preset file " + Quoted(name_) + "; check its name"};
    }
    path = *found;
    return {};
}

// Says what the file is unless it is one of this filter's presets.
std::optional<Failure> PresetFile::Inspect(bool mayBeMissing, std::string& path,
                                           Entries& entries) const {
    if (name_.empty()) {
        return Failure{ExitCode::Usage, "the preset file has no name"};
    }
    std::error_code error;
    const fs::file_status status = fs::status(PathFromText(name_), error);
    if (mayBeMissing && status.type() == fs::file_type::not_found) {
        return {};
    }
    if (status.type() == fs::file_type::not_found) {
        return Failure{ExitCode::CannotRead,
                       "there is no preset file " + Quoted(name_) + "; check its name"};
    }
    if (fs::is_directory(status)) {
        return Failure{ExitCode::NoPresetFile, Quoted(name_) + " is a folder, not a preset file"};
    }
    if (status.type() != fs::file_type::none && !fs::is_regular_file(status)) {
        return Failure{ExitCode::NoPresetFile,
                       Quoted(name_) + " is no ordinary file, and so no preset file"};
    }
    if (std::optional<Failure> failure = FindPath(path); failure) {
        return failure;
    }
    std::string content;
    const FileRead read = ReadWholeFile(path, content);
    if (read != FileRead::Done) {
        return Failure{ExitCode::CannotRead,
                       "cannot read the preset file " + Quoted(name_) +
                           (read == FileRead::Failed ? " to its end" : "; see who may read it")};
    }
    std::string owner = kPresetOwner;
    std::list<std::string> stored;
    if (!pfParameters::GetSettingNames(path, stored, kPresetOwner)) {
        pfParameters::IsSettingFileValid(path, owner);
        const std::string what =
            owner != kPresetOwner
                ? " holds presets of the filter '" + ShownPresetName(owner) + "', not of '" +
                      kPresetOwner + "'"
                : (content.empty() ? std::string(" is empty, and so no preset file")
                                   : " is no preset file: it does not say 'FileOwner " +
                                         std::string(kPresetOwner) + "'");
        return Failure{ExitCode::NoPresetFile, Quoted(name_) + what};
    }
    for (std::string& name : stored) {
        std::string shown = FromSystemText(name);
        entries.push_back({std::move(name), std::move(shown)});
    }
    return {};
}

std::optional<Failure> PresetFile::ReadNames(std::vector<std::string>& names) const {
    std::string path;
    Entries entries;
    if (std::optional<Failure> failure = Inspect(false, path, entries); failure) {
        return failure;
    }
    for (Entry& entry : entries) {
        names.push_back(std::move(entry.shown));
    }
    return {};
}

std::optional<Failure> PresetFile::Find(const std::string& preset, std::string& path,
                                        std::string& stored) const {
    Entries entries;
    if (std::optional<Failure> failure = Inspect(false, path, entries); failure) {
        return failure;
    }
    const std::string wanted = StoredPresetName(preset);
    for (const Entry& entry : entries) {
        if (entry.shown == wanted || entry.stored == wanted) {
            stored = entry.stored;
            return {};
        }
    }
    return NoSuchPreset(preset, entries);
}

std::optional<Failure> PresetFile::Load(const std::string& preset, ScriptValues& values) const {
    std::string path;
    std::string stored;
    if (std::optional<Failure> failure = Find(preset, path, stored); failure) {
        return failure;
    }
    PresetParameters parameters;
    if (!parameters.Set().LoadSettings(stored, path, nullptr)) {
        return Failure{ExitCode::CannotRead, "cannot read the preset '" + ShownPresetName(preset) +
                                                 "' in " + Quoted(name_) +
                                                 "; the file changed meanwhile"};
    }
    values = parameters.Values();
    return {};
}

std::optional<Failure> PresetFile::FailureToWrite() const {
    return Failure{ExitCode::CannotWrite,
                   "cannot write the preset file " + Quoted(name_) +
                       ", which stays as it was; see who may write there, and whether the disk is "
                       "full"};
}

std::optional<Failure> PresetFile::PrepareSave(const std::string& preset, bool replace,
                                               std::string& path, std::string& stored) const {
    stored = StoredPresetName(preset);
    if (std::optional<Failure> failure = CheckName(stored); failure) {
        return failure;
    }
    Entries entries;
    if (std::optional<Failure> failure = Inspect(true, path, entries); failure) {
        return failure;
    }
    const auto found = std::find_if(entries.begin(), entries.end(), [&stored](const Entry& entry) {
        return entry.shown == stored || entry.stored == stored;
    });
    if (found != entries.end() && !replace) {
        return Failure{ExitCode::PresetExists, "there is a preset '" + ShownPresetName(stored) +
                                                   "' in " + Quoted(name_) +
                                                   " already; --force replaces it"};
    }
    stored = found != entries.end() ? found->stored : ToSystemText(stored);
    const fs::path folder = PathFromText(name_).parent_path();
    std::error_code error;
    if (!folder.empty() && !fs::is_directory(folder, error)) {
        return Failure{ExitCode::CannotWrite,
                       "there is no folder '" + PathToText(folder) + "' for the preset file"};
    }
    const std::optional<std::string> writable = ToSystemPath(name_, true);
    if (!writable) {
        return Failure{ExitCode::CannotWrite,
                       "the name " + Quoted(name_) +
                           " cannot be written in this system's character set; choose another"};
    }
    path = *writable;
    return {};
}

std::optional<Failure> PresetFile::CheckSave(const std::string& preset, bool replace) const {
    std::string path;
    std::string stored;
    return PrepareSave(preset, replace, path, stored);
}

std::optional<Failure> PresetFile::Save(const std::string& preset, const ScriptValues& values,
                                        bool replace) const {
    std::string path;
    std::string stored;
    if (std::optional<Failure> failure = PrepareSave(preset, replace, path, stored); failure) {
        return failure;
    }
    PresetParameters parameters;
    parameters.Take(values);
    // The module's operation keeps silent when it could not write: what stands there now tells.
    PresetParameters written;
    if (!parameters.Set().SaveSettings(stored, path, kPresetOwner) ||
        !written.Set().LoadSettings(stored, path, nullptr) ||
        written.Lines() != parameters.Lines()) {
        return FailureToWrite();
    }
    return {};
}

std::optional<Failure> PresetFile::Delete(const std::string& preset, std::string& remark) const {
    std::string path;
    std::string stored;
    Entries before;
    Entries after;
    if (std::optional<Failure> failure = Find(preset, path, stored); failure) {
        return failure;
    }
    const std::optional<std::string> writable = ToSystemPath(name_, true);
    const bool isCut = IsCutByRemoval(path, stored);
    if (Inspect(false, path, before) || !writable ||
        !pfParameters::DeleteSettings(stored, *writable)) {
        return FailureToWrite();
    }
    if (Inspect(false, path, after) || after.size() >= before.size()) {
        return FailureToWrite();
    }
    if (isCut) {
        remark = "a byte 0xFF in " + Quoted(name_) +
                 " ended the file, as it does in the dialog; what stood behind it is gone, " +
                 std::to_string(before.size() - after.size() - 1) + " whole presets among it";
    }
    return {};
}

}  // namespace mv::host
