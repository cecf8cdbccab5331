#pragma once

#include <list>

#include "parameters/pfParameter.h"

namespace mv {

// One entry out of a list of named ones, counted from 1; 0 is not a selection. A member of the
// filter, used on the host's thread only.
class pfParameterList final : public pfParameter {
public:
    void Validate() override;
    void UpdateUI() override;
    void WriteScriptParam(hostapi::FilterRecord* record, hostapi::PIWriteDescriptor token) override;
    void ReadScriptParam(hostapi::FilterRecord* record, hostapi::OSType key,
                         hostapi::PIReadDescriptor token) override;
    int GetScriptKeyCount() const override;
    void GetScriptKeys(hostapi::OSType* keys) const override;
    pfUndo* CreateUndo() override;
    void Randomize(double amount) override;

    // Refuses a value below 1 or above the entry count: nothing happens, the result is false.
    bool Set(std::int32_t value);
    std::int32_t Get() const noexcept { return value_; }
    // Meant for the filter's constructor: throws std::bad_alloc when no memory is left.
    void AddEntry(std::string entry);
    void ClearEntries() noexcept;
    int GetEntryCount() const noexcept;
    // Counted from 0. An index outside the list gives an empty string.
    const std::string& GetEntry(int index) const noexcept;
    // Fills the entries with the document's channels; the radial blur has no use for it. Without
    // memory the list ends early.
    void FillChannelList(const hostapi::FilterRecord* record) noexcept;
    void SetScriptKey(hostapi::OSType key) noexcept { scriptKey_ = key; }
    void CopyFieldsFrom(const pfParameterList& source);

private:
    void AddChannelEntries(const hostapi::FilterRecord& record);

    std::int32_t value_ = 1;
    std::list<std::string> entries_;
    hostapi::OSType scriptKey_ = 0;
};

}  // namespace mv
