#include "parameters/pfParameterList.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "parameters/MirrorFold.h"
#include "parameters/ScriptParameters.h"
#include "parameters/pfUndo.h"

namespace mv {

void pfParameterList::Validate() {
    if (entries_.empty()) {
        return;
    }
    Set(std::clamp(value_, 1, GetEntryCount()));
}

void pfParameterList::UpdateUI() {
    pfParameter::UpdateUI();
}

void pfParameterList::WriteScriptParam(hostapi::FilterRecord* record,
                                       hostapi::PIWriteDescriptor token) {
    PutScriptInteger(record, token, scriptKey_, value_);
}

void pfParameterList::ReadScriptParam(hostapi::FilterRecord* record, hostapi::OSType key,
                                      hostapi::PIReadDescriptor token) {
    std::int32_t value = 0;
    if (key != 0 && key == scriptKey_ && GetScriptInteger(record, token, value)) {
        Set(value);
    }
}

int pfParameterList::GetScriptKeyCount() const {
    return scriptKey_ != 0 ? 1 : 0;
}

void pfParameterList::GetScriptKeys(hostapi::OSType* keys) const {
    if (scriptKey_ != 0) {
        *keys = scriptKey_;
    }
}

pfUndo* pfParameterList::CreateUndo() {
    return new (std::nothrow) pfUndoParameterList(this);
}

void pfParameterList::Randomize(double amount) {
    if (!GetRandomizable()) {
        return;
    }
    // Meant as it is: a large amount leaves the selection where it is, it is not capped.
    const double used = amount > 2.0 ? 0.0 : amount;
    const int count = GetEntryCount();
    const double shifted = count * (DrawRandom() - 0.5) * used + value_ - 1.0;
    Set(TruncateToInt(MirrorFold(shifted, count) + 1.0 + 0.5));
    Validate();
}

bool pfParameterList::Set(std::int32_t value) {
    if (value < 1 || value > GetEntryCount()) {
        return false;
    }
    const bool changed = value != value_;
    if (changed) {
        value_ = value;
        UpdateUI();
    }
    RunChangeCallback();
    return changed && GetUndoable();
}

void pfParameterList::AddEntry(std::string entry) {
    entries_.push_back(std::move(entry));
}

void pfParameterList::ClearEntries() noexcept {
    entries_.clear();
}

int pfParameterList::GetEntryCount() const noexcept {
    return static_cast<int>(entries_.size());
}

const std::string& pfParameterList::GetEntry(int index) const noexcept {
    static const std::string kNoEntry;
    if (index < 0 || index >= GetEntryCount()) {
        return kNoEntry;
    }
    return *std::next(entries_.begin(), index);
}

void pfParameterList::CopyFieldsFrom(const pfParameterList& source) {
    CopyCommonFields(source);
    value_ = source.value_;
    scriptKey_ = source.scriptKey_;
    if (this != &source) {
        entries_ = source.entries_;
    }
}

}  // namespace mv
