#pragma once

#include "parameters/pfParameter.h"

namespace mv {

// A point of the image in fractions of its size, without a range of its own. A member of the
// filter, used on the host's thread only.
class pfParameterPosition final : public pfParameter {
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

    // The result of every value setter: undoable when the value changed, else false.
    bool Set(double x, double y);
    double GetX() const noexcept { return x_; }
    double GetY() const noexcept { return y_; }
    void SetScriptKeys(hostapi::OSType x, hostapi::OSType y) noexcept;
    // Every field of the source but its control, without notice to anybody.
    void CopyFieldsFrom(const pfParameterPosition& source);

private:
    double x_ = 0.0;
    double y_ = 0.0;
    hostapi::OSType scriptKeyX_ = 0;
    hostapi::OSType scriptKeyY_ = 0;
};

}  // namespace mv
