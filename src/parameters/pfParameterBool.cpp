#include "parameters/pfParameterBool.h"

#include <new>

#include "parameters/ScriptParameters.h"
#include "parameters/pfUndo.h"
#include "platform/Random.h"

namespace mv {

void pfParameterBool::Validate() {}

void pfParameterBool::UpdateUI() {
    pfParameter::UpdateUI();
}

void pfParameterBool::WriteScriptParam(hostapi::FilterRecord* record,
                                       hostapi::PIWriteDescriptor token) {
    PutScriptBoolean(record, token, scriptKey_, value_);
}

void pfParameterBool::ReadScriptParam(hostapi::FilterRecord* record, hostapi::OSType key,
                                      hostapi::PIReadDescriptor token) {
    bool value = false;
    if (key != 0 && key == scriptKey_ && GetScriptBoolean(record, token, value)) {
        Set(value);
    }
}

int pfParameterBool::GetScriptKeyCount() const {
    return scriptKey_ != 0 ? 1 : 0;
}

void pfParameterBool::GetScriptKeys(hostapi::OSType* keys) const {
    if (scriptKey_ != 0) {
        *keys = scriptKey_;
    }
}

pfUndo* pfParameterBool::CreateUndo() {
    return new (std::nothrow) pfUndoParameterBool(this);
}

void pfParameterBool::Randomize(double /*amount*/) {
    if (!GetRandomizable()) {
        return;
    }
    Set(NextRandom() % 2 == 0);
    Validate();
}

bool pfParameterBool::Set(bool value) {
    const bool changed = value != value_;
    if (changed) {
        value_ = value;
        UpdateUI();
    }
    // Also without a change: a push button acts through this call.
    RunChangeCallback();
    return changed && GetUndoable();
}

void pfParameterBool::CopyFieldsFrom(const pfParameterBool& source) {
    CopyCommonFields(source);
    value_ = source.value_;
    scriptKey_ = source.scriptKey_;
}

}  // namespace mv
