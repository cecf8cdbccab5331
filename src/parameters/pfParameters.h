#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <vector>

#include "hostapi/HostApi.h"

namespace mv {

class pfParameter;
class pfUndoBuffer;

// The ordered set of a filter's parameters. The order of insertion is the order of every pass,
// of preset files and of scripts. The filter owns the set and, as members of its own, the
// parameters: the set only points at them. Host's thread only; nothing is locked.
class pfParameters {
public:
    pfParameters() = default;
    virtual ~pfParameters() = default;
    pfParameters(const pfParameters&) = delete;
    pfParameters& operator=(const pfParameters&) = delete;

    // Both throw std::bad_alloc when no memory is left; Add never does within what was reserved.
    void Reserve(std::size_t count) { parameters_.reserve(count); }
    void Add(pfParameter* parameter) { parameters_.push_back(parameter); }
    int GetCount() const noexcept { return static_cast<int>(parameters_.size()); }
    // Null when the index is out of range.
    pfParameter* GetParameter(int index) const noexcept;

    void ValidateAll();
    void UpdateAllUI();
    // Pushes a record of every randomizable parameter, changed or not, and closes the step.
    void RandomizeAll(double amount, pfUndoBuffer& undoBuffer);

    // Only for a set that owns its parameters, as Generate makes them.
    void DeleteAll() noexcept;
    // A new set of default parameters of the same classes in the same order, or null.
    pfParameters* Generate() const noexcept;
    // The destination keeps its controls and has at least as many elements, in the same order.
    static void CopyParameters(const pfParameters* source, pfParameters* destination) noexcept;

    // Preset files. Paths are handed to the system as they stand. Without an undo buffer a
    // load makes no undo step.
    bool LoadSettings(const std::string& name, const std::string& path,
                      pfUndoBuffer* undoBuffer) noexcept;
    // Also true when the file could not be written: only an empty name or path, and the file of
    // another filter, are told to the caller.
    bool SaveSettings(const std::string& name, const std::string& path,
                      const std::string& filterName) const noexcept;
    static bool DeleteSettings(const std::string& name, const std::string& path) noexcept;
    // Adds the names in the order of the file. False when the path is empty or the file is not
    // one of this filter's; a file that is missing has no names.
    static bool GetSettingNames(const std::string& path, std::list<std::string>& names,
                                const std::string& filterName) noexcept;
    // A missing file is valid: the first save makes it. When the file belongs to another filter,
    // filterName comes back as that one's name; it stays when the file is no preset file at all.
    static bool IsSettingFileValid(const std::string& path, std::string& filterName) noexcept;

    // True when the dialog is to be shown.
    bool ReadScriptParams(hostapi::FilterRecord* record);
    // 0 when nothing went wrong or nothing was done.
    hostapi::OSErr WriteScriptParams(hostapi::FilterRecord* record) const;

private:
    std::vector<pfParameter*> parameters_;
};

}  // namespace mv
