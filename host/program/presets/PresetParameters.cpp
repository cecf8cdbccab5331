#include "program/presets/PresetParameters.h"

#include "parameters/PresetBlock.h"
#include "parameters/pfParameterBool.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterList.h"
#include "parameters/pfParameterPosition.h"
#include "program/ParameterTable.h"

namespace mv::host {
namespace {

std::unique_ptr<pfParameter> MakeParameter(const ParameterInfo& info) {
    std::unique_ptr<pfParameter> result;
    switch (info.kind) {
        case ParameterKind::Position: {
            auto position = std::make_unique<pfParameterPosition>();
            position->Set(info.standard, info.standard);
            result = std::move(position);
            break;
        }
        case ParameterKind::Number: {
            auto number = std::make_unique<pfParameterFloat>();
            number->Set(info.standard);
            number->SetMinimum(info.minimum, info.minimumIsHard);
            number->SetMaximum(info.maximum, info.maximumIsHard);
            result = std::move(number);
            break;
        }
        case ParameterKind::Switch: {
            auto flag = std::make_unique<pfParameterBool>();
            flag->Set(info.standard != 0.0);
            result = std::move(flag);
            break;
        }
        case ParameterKind::Choice: {
            auto list = std::make_unique<pfParameterList>();
            for (const std::string_view entry : info.entries) {
                list->AddEntry(std::string(entry));
            }
            list->Set(static_cast<std::int32_t>(info.standard));
            result = std::move(list);
            break;
        }
    }
    result->SetName(std::string(info.name));
    return result;
}

template <class Value>
const Value* Find(const ScriptValues& values, std::string_view key) {
    const ScriptValue* const value = FindValue(values, KeyOf(key));
    return value != nullptr ? std::get_if<Value>(value) : nullptr;
}

void TakeInto(pfParameter& parameter, const ParameterInfo& info, const ScriptValues& values) {
    if (auto* const position = dynamic_cast<pfParameterPosition*>(&parameter)) {
        const double* const x = Find<double>(values, info.key);
        const double* const y = Find<double>(values, info.secondKey);
        position->Set(x != nullptr ? *x : position->GetX(), y != nullptr ? *y : position->GetY());
    } else if (auto* const number = dynamic_cast<pfParameterFloat*>(&parameter)) {
        if (const auto* const value = Find<double>(values, info.key)) {
            number->Set(*value);
        }
    } else if (auto* const flag = dynamic_cast<pfParameterBool*>(&parameter)) {
        if (const auto* const value = Find<bool>(values, info.key)) {
            flag->Set(*value);
        }
    } else if (auto* const list = dynamic_cast<pfParameterList*>(&parameter)) {
        if (const auto* const value = Find<std::int32_t>(values, info.key)) {
            list->Set(*value);
        }
    }
}

void Append(ScriptValues& values, const pfParameter& parameter, const ParameterInfo& info) {
    if (const auto* const position = dynamic_cast<const pfParameterPosition*>(&parameter)) {
        values.push_back({KeyOf(info.key), position->GetX()});
        values.push_back({KeyOf(info.secondKey), position->GetY()});
    } else if (const auto* const number = dynamic_cast<const pfParameterFloat*>(&parameter)) {
        values.push_back({KeyOf(info.key), number->Get()});
    } else if (const auto* const flag = dynamic_cast<const pfParameterBool*>(&parameter)) {
        values.push_back({KeyOf(info.key), flag->Get()});
    } else if (const auto* const list = dynamic_cast<const pfParameterList*>(&parameter)) {
        values.push_back({KeyOf(info.key), list->Get()});
    }
}

}  // namespace

PresetParameters::PresetParameters() {
    for (const ParameterInfo& info : Parameters()) {
        owned_.push_back(MakeParameter(info));
        set_.Add(owned_.back().get());
    }
}

PresetParameters::~PresetParameters() = default;

void PresetParameters::Take(const ScriptValues& values) {
    for (std::size_t i = 0; i < owned_.size(); ++i) {
        TakeInto(*owned_[i], Parameters()[i], values);
    }
    set_.ValidateAll();
}

ScriptValues PresetParameters::Values() const {
    ScriptValues values;
    for (std::size_t i = 0; i < owned_.size(); ++i) {
        Append(values, *owned_[i], Parameters()[i]);
    }
    return values;
}

std::string PresetParameters::Lines() const {
    std::string text;
    AppendParameterLines(text, set_);
    return text;
}

}  // namespace mv::host
