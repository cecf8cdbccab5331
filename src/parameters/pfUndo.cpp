#include "parameters/pfUndo.h"

#include <new>
#include <type_traits>

#include "parameters/pfParameterBool.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterInt.h"
#include "parameters/pfParameterList.h"
#include "parameters/pfParameterPosition.h"
#include "parameters/pfParameterRGB.h"

namespace mv {

// Release runs no destructor, so no record may need one.
static_assert(std::is_trivially_destructible_v<pfUndoParameterPosition>);
static_assert(std::is_trivially_destructible_v<pfUndoParameterBool>);
static_assert(std::is_trivially_destructible_v<pfUndoParameterInt>);
static_assert(std::is_trivially_destructible_v<pfUndoParameterFloat>);
static_assert(std::is_trivially_destructible_v<pfUndoParameterList>);
static_assert(std::is_trivially_destructible_v<pfUndoParameterRGB>);

void pfUndo::Release(pfUndo* record) noexcept {
    ::operator delete(record);
}

pfUndoParameterPosition::pfUndoParameterPosition(pfParameterPosition* parameter) noexcept
    : parameter_(parameter) {
    if (parameter_ != nullptr) {
        x_ = parameter_->GetX();
        y_ = parameter_->GetY();
    }
}

void pfUndoParameterPosition::Apply() {
    if (parameter_ == nullptr) {
        return;
    }
    const double x = parameter_->GetX();
    const double y = parameter_->GetY();
    parameter_->Set(x_, y_);
    x_ = x;
    y_ = y;
}

pfUndoParameterBool::pfUndoParameterBool(pfParameterBool* parameter) noexcept
    : parameter_(parameter) {
    if (parameter_ != nullptr) {
        value_ = parameter_->Get();
    }
}

void pfUndoParameterBool::Apply() {
    if (parameter_ == nullptr) {
        return;
    }
    const bool value = parameter_->Get();
    parameter_->Set(value_);
    value_ = value;
    parameter_->UpdateUI();
}

pfUndoParameterInt::pfUndoParameterInt(pfParameterInt* parameter) noexcept : parameter_(parameter) {
    if (parameter_ != nullptr) {
        value_ = parameter_->Get();
    }
}

void pfUndoParameterInt::Apply() {
    if (parameter_ == nullptr) {
        return;
    }
    const std::int32_t value = parameter_->Get();
    parameter_->Set(value_);
    value_ = value;
    parameter_->UpdateUI();
}

pfUndoParameterFloat::pfUndoParameterFloat(pfParameterFloat* parameter) noexcept
    : parameter_(parameter) {
    if (parameter_ != nullptr) {
        value_ = parameter_->Get();
    }
}

void pfUndoParameterFloat::Apply() {
    if (parameter_ == nullptr) {
        return;
    }
    const double value = parameter_->Get();
    parameter_->Set(value_);
    value_ = value;
}

pfUndoParameterList::pfUndoParameterList(pfParameterList* parameter) noexcept
    : parameter_(parameter) {
    if (parameter_ != nullptr) {
        value_ = parameter_->Get();
    }
}

void pfUndoParameterList::Apply() {
    if (parameter_ == nullptr) {
        return;
    }
    const std::int32_t value = parameter_->Get();
    parameter_->Set(value_);
    value_ = value;
    parameter_->UpdateUI();
}

pfUndoParameterRGB::pfUndoParameterRGB(pfParameterRGB* parameter) noexcept : parameter_(parameter) {
    if (parameter_ != nullptr) {
        red_ = parameter_->GetRed();
        green_ = parameter_->GetGreen();
        blue_ = parameter_->GetBlue();
    }
}

void pfUndoParameterRGB::Apply() {
    if (parameter_ == nullptr) {
        return;
    }
    const double red = parameter_->GetRed();
    const double green = parameter_->GetGreen();
    const double blue = parameter_->GetBlue();
    parameter_->Set(red_, green_, blue_);
    red_ = red;
    green_ = green;
    blue_ = blue;
    parameter_->UpdateUI();
}

}  // namespace mv
