#pragma once

#include "interface/pfParameterUIWin32.h"

namespace mv {

class pfParameterFloat;

// An angle in degrees: a dial that the dialog paints, an edit for whole turns and one for the
// rest. Owned by the filter, dialog's thread only.
class pfParameterUIAngleWin32 final : public pfParameterUIWin32 {
public:
    pfParameterUIAngleWin32(int dialId, int turnsId, int degreesId) noexcept
        : dialId_(dialId), turnsId_(turnsId), degreesId_(degreesId) {}

    void Refresh() override;
    bool ReadWindow() override;
    bool OwnsId(int id) const override;
    void FocusLost(int id) override;

    pfParameterFloat* Parameter() const noexcept;
    HWND Dial() const noexcept { return Item(dialId_); }
    // The pointer dragged to (right, up) from the dial's centre; true if the angle changed.
    bool SetFromPointer(double right, double up);

private:
    int dialId_;
    int turnsId_;
    int degreesId_;
};

}  // namespace mv
