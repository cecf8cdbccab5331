#pragma once

#include "parameters/pfParameter.h"

namespace mv {

// A whole number with an interface range whose ends may each be hard: Validate pulls the value back
// to a hard end, while a soft one only ends the slider. A member of the filter, used on the host's
// thread only.
class pfParameterInt final : public pfParameter {
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

    bool Set(std::int32_t value);
    std::int32_t Get() const noexcept { return value_; }
    void SetMinimum(std::int32_t value, bool hard) noexcept;
    void SetMaximum(std::int32_t value, bool hard) noexcept;
    std::int32_t GetMinimum() const noexcept { return minimum_; }
    std::int32_t GetMaximum() const noexcept { return maximum_; }
    bool GetMinimumHard() const noexcept { return minimumHard_; }
    bool GetMaximumHard() const noexcept { return maximumHard_; }
    void SetScriptKey(hostapi::OSType key) noexcept { scriptKey_ = key; }
    void CopyFieldsFrom(const pfParameterInt& source);

private:
    std::int32_t value_ = 0;
    std::int32_t minimum_ = 0;
    std::int32_t maximum_ = 1;
    bool minimumHard_ = false;
    bool maximumHard_ = false;
    hostapi::OSType scriptKey_ = 0;
};

}  // namespace mv
