#pragma once

#include "parameters/pfParameter.h"

namespace mv {

// A switch, and the push button that acts through its change callback. A member of the filter,
// used on the host's thread only.
class pfParameterBool final : public pfParameter {
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

    bool Set(bool value);
    bool Get() const noexcept { return value_; }
    void SetScriptKey(hostapi::OSType key) noexcept { scriptKey_ = key; }
    void CopyFieldsFrom(const pfParameterBool& source);

private:
    bool value_ = false;
    hostapi::OSType scriptKey_ = 0;
};

}  // namespace mv
