// The five operations of pfParameters on preset files.
#include <algorithm>
#include <new>

#include "diagnostics/Log.h"
#include "parameters/PresetBlock.h"
#include "parameters/PresetText.h"
#include "parameters/pfParameters.h"
#include "platform/FileReplace.h"

namespace mv {

namespace {

constexpr const char* kTemporarySuffix = "tmp";

FileRead ReadPresets(const std::string& path, std::string& text) noexcept {
    const FileRead result = ReadWholeFile(path, text);
    if (result == FileRead::Failed) {
        // Half a file must not pass for a whole one.
        text.clear();
    }
    if (kTextHasCarriageReturns) {
        ToLineFeeds(text);
    }
    return result;
}

bool CouldOpen(FileRead result) noexcept {
    return result == FileRead::Done || result == FileRead::Failed;
}

std::string ToFileText(const std::string& text) {
    return kTextHasCarriageReturns ? ToCarriageReturns(text) : text;
}

void WarnAboutReading(const std::string& path) noexcept {
    WriteLog(kWarning, kWarningPrefix, "Could not open file for reading: '", path, "'");
}

void WarnAboutWriting(const std::string& path, const char* suffix) noexcept {
    WriteLog(kWarning, kWarningPrefix, "Could not open file for writing: '", path, suffix, "'");
}

// A name would fall apart into tokens at any of these.
std::string WithoutBlanks(std::string name) noexcept {
    std::replace_if(
        name.begin(), name.end(),
        [](char character) { return character == ' ' || (character >= '\t' && character <= '\r'); },
        '_');
    return name;
}

// Adds to the file in one step, like every rewrite, where that can be: a folder that takes no new
// files, a file that can be written but not read, and a disk that has no room for both the old and
// the new file leave nothing but adding in place.
void AppendPreset(const std::string& path, FileRead read, std::string&& present,
                  const std::string& addition) {
    if (read != FileRead::NotOpened) {
        const FileReplacement result =
            ReplaceWholeFile(path, kTemporarySuffix, present.append(addition));
        if (result == FileReplacement::Done || result == FileReplacement::TargetNotWritable) {
            return;
        }
    }
    if (AppendToFile(path, addition)) {
        RemoveFile(path + kTemporarySuffix);
    }
}

void SavePreset(const std::string& name, const std::string& path, const std::string& filterName,
                const pfParameters& parameters) {
    std::string present;
    const FileRead read = ReadWholeFile(path, present);
    if (read == FileRead::Failed) {
        return;
    }
    std::string lines;
    AppendParameterLines(lines, parameters);
    std::string text;
    if (kTextHasCarriageReturns) {
        text = present;
        ToLineFeeds(text);
    }
    std::string rewritten;
    if (ReplacePreset(kTextHasCarriageReturns ? text : present, name, lines, rewritten)) {
        ReplaceWholeFile(path, kTemporarySuffix, ToFileText(rewritten));
        return;
    }
    std::string addition;
    if (read != FileRead::Done) {
        addition.append(kOwnerWord).append(1, ' ').append(filterName).append(1, '\n');
    }
    addition.append(1, '\n').append(kBlockWord).append(1, ' ').append(name).append(1, '\n');
    // The lines that are there keep their ends, whatever these are.
    if (kTextHasCarriageReturns) {
        DropEndMark(present);
    }
    AppendPreset(path, read, std::move(present), ToFileText(addition + lines));
}

bool LoadPreset(const std::string& name, const std::string& path, pfParameters& parameters,
                pfUndoBuffer* undoBuffer) {
    if (name.empty() || path.empty()) {
        return false;
    }
    std::string text;
    if (!CouldOpen(ReadPresets(path, text))) {
        WarnAboutReading(path);
        return false;
    }
    PresetTokens tokens(text);
    if (!FindPreset(tokens, name)) {
        return false;
    }
    LoadParameterLines(tokens, parameters, undoBuffer);
    return true;
}

bool DeletePreset(const std::string& name, const std::string& path) {
    if (name.empty() || path.empty()) {
        return false;
    }
    std::string text;
    if (!CouldOpen(ReadPresets(path, text))) {
        WarnAboutReading(path);
        return false;
    }
    std::string rewritten;
    if (!RemovePreset(text, name, rewritten)) {
        return false;
    }
    switch (ReplaceWholeFile(path, kTemporarySuffix, ToFileText(rewritten))) {
        case FileReplacement::Done:
            return true;
        case FileReplacement::TargetNotWritable:
        case FileReplacement::TargetNotReplaced:
            // Meant as it is: the caller is told of success, the log of the failure.
            WarnAboutWriting(path, "");
            return true;
        default:
            WarnAboutWriting(path, kTemporarySuffix);
            return false;
    }
}

bool CheckOwner(const std::string& path, std::string& filterName) {
    if (path.empty()) {
        return false;
    }
    std::string text;
    if (!CouldOpen(ReadPresets(path, text))) {
        // The first save may still create it.
        return true;
    }
    PresetTokens tokens(text);
    std::string_view token;
    while (tokens.Next(token)) {
        if (token != kOwnerWord) {
            continue;
        }
        if (!tokens.Next(token)) {
            return false;
        }
        if (token != filterName) {
            filterName.assign(token);
            return false;
        }
        return true;
    }
    return false;
}

void ListNames(const std::string& path, std::list<std::string>& names) {
    std::string text;
    if (ReadPresets(path, text) != FileRead::Done) {
        return;
    }
    PresetTokens tokens(text);
    std::string_view token;
    while (tokens.Next(token)) {
        if (token == kBlockWord && tokens.Next(token)) {
            names.emplace_back(token);
        }
    }
}

}  // namespace

bool pfParameters::LoadSettings(const std::string& name, const std::string& path,
                                pfUndoBuffer* undoBuffer) noexcept {
    WriteLog(kTrace, "pfParmeters::LoadSettings( strName(", name, "), strPath(", path, ") )");
    const LogScope scope;
    bool result = false;
    try {
        result = LoadPreset(name, path, *this, undoBuffer);
    } catch (const std::bad_alloc&) {
        // As with a file that cannot be read.
    }
    WriteLog(kTrace, "pfParmeters::LoadSettings( return(", result, ") )");
    return result;
}

bool pfParameters::SaveSettings(const std::string& name, const std::string& path,
                                const std::string& filterName) const noexcept {
    WriteLog(kTrace, "pfParmeters::SaveSettings( strName(", name, "), strPath(", path,
             "), strFilterName(", filterName, ") )");
    const LogScope scope;
    bool result = false;
    try {
        std::string owner = filterName;
        if (!name.empty() && !path.empty() && IsSettingFileValid(path, owner)) {
            // Meant as it is: from here on a failure to write is not told to the caller.
            result = true;
            SavePreset(WithoutBlanks(name), path, filterName, *this);
        }
    } catch (const std::bad_alloc&) {
        // As with a file that cannot be written.
    }
    WriteLog(kTrace, "pfParmeters::SaveSettings( return(", result, ") )");
    return result;
}

bool pfParameters::DeleteSettings(const std::string& name, const std::string& path) noexcept {
    WriteLog(kTrace, "pfParmeters::DeleteSettings( strName(", name, "), strPath(", path, ") )");
    const LogScope scope;
    bool result = false;
    try {
        result = DeletePreset(name, path);
    } catch (const std::bad_alloc&) {
        // The file is as it was.
    }
    WriteLog(kTrace, "pfParmeters::DeleteSettings( return(", result, ") )");
    return result;
}

bool pfParameters::GetSettingNames(const std::string& path, std::list<std::string>& names,
                                   const std::string& filterName) noexcept {
    WriteLog(kTrace, "pfParmeters::GetSettingNames( strPath(", path, ") )");
    const LogScope scope;
    bool result = false;
    try {
        std::string owner = filterName;
        result = IsSettingFileValid(path, owner);
        if (result) {
            ListNames(path, names);
        }
    } catch (const std::bad_alloc&) {
        // The names so far stand.
    }
    WriteLog(kTrace, "pfParmeters::GetSettingNames( return(", result, ") )");
    return result;
}

bool pfParameters::IsSettingFileValid(const std::string& path, std::string& filterName) noexcept {
    WriteLog(kTrace, "pfParmeters::IsSettingFileValid( strPath(", path, ") )");
    const LogScope scope;
    bool result = false;
    try {
        result = CheckOwner(path, filterName);
    } catch (const std::bad_alloc&) {
        // As with a file that is no preset file.
    }
    WriteLog(kTrace, "pfParmeters::IsSettingFileValid( return(", result, ") )");
    return result;
}

}  // namespace mv
