#include "parameters/pfParameter.h"

#include "parameters/pfParameterUI.h"

namespace mv {

void pfParameter::UpdateUI() {
    if (ui_ != nullptr) {
        ui_->Refresh();
    }
}

void pfParameter::SetChangeCallback(pfChangeCallback function, void* data) noexcept {
    changeCallback_ = function;
    changeCallbackData_ = data;
}

void pfParameter::RunChangeCallback() {
    if (changeCallback_ != nullptr) {
        changeCallback_(this, changeCallbackData_);
    }
}

void pfParameter::CopyCommonFields(const pfParameter& source) {
    name_ = source.name_;
    changeCallback_ = source.changeCallback_;
    changeCallbackData_ = source.changeCallbackData_;
    persistent_ = source.persistent_;
    undoable_ = source.undoable_;
    randomizable_ = source.randomizable_;
}

}  // namespace mv
