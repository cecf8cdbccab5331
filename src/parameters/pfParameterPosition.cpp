#include "parameters/pfParameterPosition.h"

#include <new>

#include "parameters/MirrorFold.h"
#include "parameters/ScriptParameters.h"
#include "parameters/pfUndo.h"

namespace mv {

void pfParameterPosition::Validate() {}

void pfParameterPosition::UpdateUI() {
    pfParameter::UpdateUI();
}

void pfParameterPosition::WriteScriptParam(hostapi::FilterRecord* record,
                                           hostapi::PIWriteDescriptor token) {
    PutScriptFloat(record, token, scriptKeyX_, x_);
    PutScriptFloat(record, token, scriptKeyY_, y_);
}

void pfParameterPosition::ReadScriptParam(hostapi::FilterRecord* record, hostapi::OSType key,
                                          hostapi::PIReadDescriptor token) {
    double value = 0.0;
    if (key == 0 || (key != scriptKeyX_ && key != scriptKeyY_) ||
        !GetScriptFloat(record, token, value)) {
        return;
    }
    Set(key == scriptKeyX_ ? value : x_, key == scriptKeyY_ ? value : y_);
}

int pfParameterPosition::GetScriptKeyCount() const {
    return (scriptKeyX_ != 0 ? 1 : 0) + (scriptKeyY_ != 0 ? 1 : 0);
}

void pfParameterPosition::GetScriptKeys(hostapi::OSType* keys) const {
    for (const hostapi::OSType key : {scriptKeyX_, scriptKeyY_}) {
        if (key != 0) {
            *keys++ = key;
        }
    }
}

pfUndo* pfParameterPosition::CreateUndo() {
    return new (std::nothrow) pfUndoParameterPosition(this);
}

void pfParameterPosition::Randomize(double amount) {
    if (!GetRandomizable()) {
        return;
    }
    const double drawX = DrawRandom();
    const double drawY = DrawRandom();
    const double x = x_ + (drawX - 0.5) * amount;
    const double y = y_ + (drawY - 0.5) * amount;
    Set(MirrorFold(x, 1), MirrorFold(y, 1));
    Validate();
}

bool pfParameterPosition::Set(double x, double y) {
    // Written with < and >, so that what is no number never counts as a change.
    if (!(x < x_ || x > x_ || y < y_ || y > y_)) {
        return false;
    }
    x_ = x;
    y_ = y;
    UpdateUI();
    return GetUndoable();
}

void pfParameterPosition::SetScriptKeys(hostapi::OSType x, hostapi::OSType y) noexcept {
    scriptKeyX_ = x;
    scriptKeyY_ = y;
}

void pfParameterPosition::CopyFieldsFrom(const pfParameterPosition& source) {
    CopyCommonFields(source);
    x_ = source.x_;
    y_ = source.y_;
    scriptKeyX_ = source.scriptKeyX_;
    scriptKeyY_ = source.scriptKeyY_;
}

}  // namespace mv
