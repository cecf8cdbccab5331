#pragma once

#include "parameters/pfParameter.h"

namespace mv {

// A colour with channels in 0.0 to 1.0. A member of a filter, used on the host's thread only.
class pfParameterRGB final : public pfParameter {
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

    bool Set(double red, double green, double blue);
    double GetRed() const noexcept { return red_; }
    double GetGreen() const noexcept { return green_; }
    double GetBlue() const noexcept { return blue_; }
    void SetScriptKeys(hostapi::OSType red, hostapi::OSType green, hostapi::OSType blue) noexcept;
    void CopyFieldsFrom(const pfParameterRGB& source);

private:
    double red_ = 1.0;
    double green_ = 1.0;
    double blue_ = 1.0;
    hostapi::OSType scriptKeyRed_ = 0;
    hostapi::OSType scriptKeyGreen_ = 0;
    hostapi::OSType scriptKeyBlue_ = 0;
};

}  // namespace mv
