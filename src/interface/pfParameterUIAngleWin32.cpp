#include "interface/pfParameterUIAngleWin32.h"

#include "interface/ControlValues.h"
#include "interface/SafeNumber.h"
#include "parameters/pfParameterFloat.h"

namespace mv {

pfParameterFloat* pfParameterUIAngleWin32::Parameter() const noexcept {
    return dynamic_cast<pfParameterFloat*>(GetParameter());
}

void pfParameterUIAngleWin32::Refresh() {
    const pfParameterFloat* parameter = Parameter();
    if (parameter == nullptr || GetWindow() == nullptr) {
        return;
    }
    const TurnsAndDegrees split = SplitAngle(parameter->Get());
    if (Item(turnsId_) != nullptr && !HasFocus(turnsId_)) {
        WriteWholeNumber(turnsId_, split.turns);
    }
    if (Item(degreesId_) != nullptr && !HasFocus(degreesId_)) {
        WriteNumber(degreesId_, split.degrees);
    }
    FinishRefresh({dialId_, turnsId_, degreesId_});
}

bool pfParameterUIAngleWin32::ReadWindow() {
    pfParameterFloat* parameter = Parameter();
    if (parameter == nullptr || !(HasFocus(turnsId_) || HasFocus(degreesId_))) {
        return false;
    }
    double turns = 0.0;
    double degrees = 0.0;
    ReadNumber(turnsId_, turns);
    ReadNumber(degreesId_, degrees);
    // The refresh that the change brings must not write into the edit that is being typed in.
    const int turnsId = turnsId_;
    turnsId_ = kNoId;
    const bool changed = parameter->Set(JoinAngle(TruncateToInt(turns), degrees));
    turnsId_ = turnsId;
    return changed;
}

bool pfParameterUIAngleWin32::OwnsId(int id) const {
    return id != kNoId && (id == dialId_ || id == turnsId_ || id == degreesId_);
}

void pfParameterUIAngleWin32::FocusLost(int) {
    ReadWindow();
    Refresh();
}

bool pfParameterUIAngleWin32::SetFromPointer(double right, double up) {
    pfParameterFloat* parameter = Parameter();
    return parameter != nullptr && parameter->Set(AngleFromPointer(parameter->Get(), right, up));
}

}  // namespace mv
