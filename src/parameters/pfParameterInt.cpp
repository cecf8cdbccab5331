#include "parameters/pfParameterInt.h"

#include <algorithm>
#include <new>

#include "parameters/MirrorFold.h"
#include "parameters/ScriptParameters.h"
#include "parameters/pfUndo.h"

namespace mv {

void pfParameterInt::Validate() {
    std::int32_t value = value_;
    if (minimumHard_) {
        value = std::max(value, minimum_);
    }
    if (maximumHard_) {
        value = std::min(value, maximum_);
    }
    if (value != value_) {
        value_ = value;
        UpdateUI();
    }
}

void pfParameterInt::UpdateUI() {
    pfParameter::UpdateUI();
}

void pfParameterInt::WriteScriptParam(hostapi::FilterRecord* record,
                                      hostapi::PIWriteDescriptor token) {
    PutScriptInteger(record, token, scriptKey_, value_);
}

void pfParameterInt::ReadScriptParam(hostapi::FilterRecord* record, hostapi::OSType key,
                                     hostapi::PIReadDescriptor token) {
    std::int32_t value = 0;
    if (key != 0 && key == scriptKey_ && GetScriptInteger(record, token, value)) {
        Set(value);
    }
}

int pfParameterInt::GetScriptKeyCount() const {
    return scriptKey_ != 0 ? 1 : 0;
}

void pfParameterInt::GetScriptKeys(hostapi::OSType* keys) const {
    if (scriptKey_ != 0) {
        *keys = scriptKey_;
    }
}

pfUndo* pfParameterInt::CreateUndo() {
    return new (std::nothrow) pfUndoParameterInt(this);
}

void pfParameterInt::Randomize(double amount) {
    if (!GetRandomizable()) {
        return;
    }
    const double difference = static_cast<double>(maximum_) - minimum_;
    const double shifted = difference * (DrawRandom() - 0.5) * amount + value_ - minimum_;
    Set(TruncateToInt(minimum_ + MirrorFold(shifted, TruncateToInt(difference)) + 0.5));
    Validate();
}

bool pfParameterInt::Set(std::int32_t value) {
    if (value == value_) {
        return false;
    }
    value_ = value;
    UpdateUI();
    return GetUndoable();
}

void pfParameterInt::SetMinimum(std::int32_t value, bool hard) noexcept {
    minimum_ = value;
    minimumHard_ = hard;
}

void pfParameterInt::SetMaximum(std::int32_t value, bool hard) noexcept {
    maximum_ = value;
    maximumHard_ = hard;
}

void pfParameterInt::CopyFieldsFrom(const pfParameterInt& source) {
    CopyCommonFields(source);
    value_ = source.value_;
    minimum_ = source.minimum_;
    maximum_ = source.maximum_;
    minimumHard_ = source.minimumHard_;
    maximumHard_ = source.maximumHard_;
    scriptKey_ = source.scriptKey_;
}

}  // namespace mv
