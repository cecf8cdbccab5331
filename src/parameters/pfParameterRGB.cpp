#include "parameters/pfParameterRGB.h"

#include <algorithm>
#include <new>

#include "parameters/MirrorFold.h"
#include "parameters/ScriptParameters.h"
#include "parameters/pfUndo.h"

namespace mv {

void pfParameterRGB::Validate() {
    Set(std::clamp(red_, 0.0, 1.0), std::clamp(green_, 0.0, 1.0), std::clamp(blue_, 0.0, 1.0));
}

void pfParameterRGB::UpdateUI() {
    pfParameter::UpdateUI();
}

void pfParameterRGB::WriteScriptParam(hostapi::FilterRecord* record,
                                      hostapi::PIWriteDescriptor token) {
    PutScriptFloat(record, token, scriptKeyRed_, red_);
    PutScriptFloat(record, token, scriptKeyGreen_, green_);
    PutScriptFloat(record, token, scriptKeyBlue_, blue_);
}

void pfParameterRGB::ReadScriptParam(hostapi::FilterRecord* record, hostapi::OSType key,
                                     hostapi::PIReadDescriptor token) {
    const bool isRed = key == scriptKeyRed_;
    const bool isGreen = key == scriptKeyGreen_;
    const bool isBlue = key == scriptKeyBlue_;
    double value = 0.0;
    if (key == 0 || !(isRed || isGreen || isBlue) || !GetScriptFloat(record, token, value)) {
        return;
    }
    Set(isRed ? value : red_, isGreen ? value : green_, isBlue ? value : blue_);
}

int pfParameterRGB::GetScriptKeyCount() const {
    return (scriptKeyRed_ != 0 ? 1 : 0) + (scriptKeyGreen_ != 0 ? 1 : 0) +
           (scriptKeyBlue_ != 0 ? 1 : 0);
}

void pfParameterRGB::GetScriptKeys(hostapi::OSType* keys) const {
    for (const hostapi::OSType key : {scriptKeyRed_, scriptKeyGreen_, scriptKeyBlue_}) {
        if (key != 0) {
            *keys++ = key;
        }
    }
}

pfUndo* pfParameterRGB::CreateUndo() {
    return new (std::nothrow) pfUndoParameterRGB(this);
}

void pfParameterRGB::Randomize(double amount) {
    if (!GetRandomizable()) {
        return;
    }
    const double used = std::min(amount, 2.0);
    const double drawRed = DrawRandom();
    const double drawGreen = DrawRandom();
    const double drawBlue = DrawRandom();
    const double red = red_ + (drawRed - 0.5) * used;
    const double green = green_ + (drawGreen - 0.5) * used;
    const double blue = blue_ + (drawBlue - 0.5) * used;
    Set(MirrorFold(red, 1), MirrorFold(green, 1), MirrorFold(blue, 1));
    Validate();
}

bool pfParameterRGB::Set(double red, double green, double blue) {
    // Written with < and >, so that what is no number never counts as a change.
    if (!(red < red_ || red > red_ || green < green_ || green > green_ || blue < blue_ ||
          blue > blue_)) {
        return false;
    }
    red_ = red;
    green_ = green;
    blue_ = blue;
    UpdateUI();
    return GetUndoable();
}

void pfParameterRGB::SetScriptKeys(hostapi::OSType red, hostapi::OSType green,
                                   hostapi::OSType blue) noexcept {
    scriptKeyRed_ = red;
    scriptKeyGreen_ = green;
    scriptKeyBlue_ = blue;
}

void pfParameterRGB::CopyFieldsFrom(const pfParameterRGB& source) {
    CopyCommonFields(source);
    red_ = source.red_;
    green_ = source.green_;
    blue_ = source.blue_;
    scriptKeyRed_ = source.scriptKeyRed_;
    scriptKeyGreen_ = source.scriptKeyGreen_;
    scriptKeyBlue_ = source.scriptKeyBlue_;
}

}  // namespace mv
