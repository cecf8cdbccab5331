#include "parameters/pfParameterFloat.h"

#include <algorithm>
#include <new>

#include "parameters/MirrorFold.h"
#include "parameters/ScriptParameters.h"
#include "parameters/pfUndo.h"

namespace mv {

void pfParameterFloat::Validate() {
    // What is no number passes both comparisons and stays.
    double value = value_;
    if (minimumHard_) {
        value = std::max(value, minimum_);
    }
    if (maximumHard_) {
        value = std::min(value, maximum_);
    }
    Set(value);
}

void pfParameterFloat::UpdateUI() {
    pfParameter::UpdateUI();
}

void pfParameterFloat::WriteScriptParam(hostapi::FilterRecord* record,
                                        hostapi::PIWriteDescriptor token) {
    PutScriptFloat(record, token, scriptKey_, value_);
}

void pfParameterFloat::ReadScriptParam(hostapi::FilterRecord* record, hostapi::OSType key,
                                       hostapi::PIReadDescriptor token) {
    double value = 0.0;
    if (key != 0 && key == scriptKey_ && GetScriptFloat(record, token, value)) {
        Set(value);
    }
}

int pfParameterFloat::GetScriptKeyCount() const {
    return scriptKey_ != 0 ? 1 : 0;
}

void pfParameterFloat::GetScriptKeys(hostapi::OSType* keys) const {
    if (scriptKey_ != 0) {
        *keys = scriptKey_;
    }
}

pfUndo* pfParameterFloat::CreateUndo() {
    return new (std::nothrow) pfUndoParameterFloat(this);
}

void pfParameterFloat::Randomize(double amount) {
    if (!GetRandomizable()) {
        return;
    }
    const double difference = maximum_ - minimum_;
    const double shifted = difference * (DrawRandom() - 0.5) * amount + value_ - minimum_;
    // The fold range is meant to be a whole number: a range of 1.5 folds at 1.
    Set(minimum_ + MirrorFold(shifted, TruncateToInt(difference)));
    Validate();
}

bool pfParameterFloat::Set(double value) {
    // Written with < and >, so that what is no number never counts as a change.
    const bool changed = value < value_ || value > value_;
    if (changed) {
        value_ = value;
        UpdateUI();
    }
    RunChangeCallback();
    return changed && GetUndoable();
}

void pfParameterFloat::SetMinimum(double value, bool hard) noexcept {
    minimum_ = value;
    minimumHard_ = hard;
}

void pfParameterFloat::SetMaximum(double value, bool hard) noexcept {
    maximum_ = value;
    maximumHard_ = hard;
}

void pfParameterFloat::CopyFieldsFrom(const pfParameterFloat& source) {
    CopyCommonFields(source);
    value_ = source.value_;
    minimum_ = source.minimum_;
    maximum_ = source.maximum_;
    minimumHard_ = source.minimumHard_;
    maximumHard_ = source.maximumHard_;
    scriptKey_ = source.scriptKey_;
}

}  // namespace mv
