#pragma once

#include "parameters/pfParameter.h"

namespace mv {

// A number with an interface range whose ends may each be hard: Validate pulls the value back to
// a hard end, while a soft one only ends the slider. A member of the filter, used on the host's
// thread only.
class pfParameterFloat final : public pfParameter {
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

    bool Set(double value);
    double Get() const noexcept { return value_; }
    void SetMinimum(double value, bool hard) noexcept;
    void SetMaximum(double value, bool hard) noexcept;
    double GetMinimum() const noexcept { return minimum_; }
    double GetMaximum() const noexcept { return maximum_; }
    bool GetMinimumHard() const noexcept { return minimumHard_; }
    bool GetMaximumHard() const noexcept { return maximumHard_; }
    void SetScriptKey(hostapi::OSType key) noexcept { scriptKey_ = key; }
    void CopyFieldsFrom(const pfParameterFloat& source);

private:
    double value_ = 0.0;
    double minimum_ = 0.0;
    double maximum_ = 1.0;
    bool minimumHard_ = false;
    bool maximumHard_ = false;
    hostapi::OSType scriptKey_ = 0;
};

}  // namespace mv
