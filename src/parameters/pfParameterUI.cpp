#include "parameters/pfParameterUI.h"

#include "parameters/pfParameter.h"

namespace mv {

void pfParameterUI::Setup() {}

void pfParameterUI::Refresh() {}

bool pfParameterUI::ReadWindow() {
    return false;
}

void pfParameterUI::Bind(pfParameter* parameter) noexcept {
    if (parameter == nullptr || parameter == parameter_) {
        return;
    }
    parameter->ui_ = this;
    parameter_ = parameter;
}

pfParameter* pfParameterUI::Unbind() noexcept {
    pfParameter* const parameter = parameter_;
    if (parameter != nullptr) {
        parameter->ui_ = nullptr;
        parameter_ = nullptr;
    }
    return parameter;
}

void pfParameterUI::SetEnabled(bool value) {
    if (value == enabled_) {
        return;
    }
    enabled_ = value;
    Refresh();
}

}  // namespace mv
