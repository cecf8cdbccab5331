#include "interface/LastUsedSettings.h"

#include <cstdint>
#include <string_view>

#include "interface/NumberText.h"
#include "parameters/pfParameterBool.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterInt.h"
#include "parameters/pfParameterList.h"
#include "parameters/pfParameterPosition.h"
#include "parameters/pfParameterRGB.h"
#include "parameters/pfParameters.h"
#include "platform/KeyValueStore.h"

namespace mv {

namespace {

// A value's name: the parameter's, and a suffix where one parameter has several values.
class ValueName {
public:
    ValueName(const pfParameter& parameter, std::string_view suffix) noexcept {
        TextWriter writer(text_);
        writer.Append(parameter.GetNameView());
        writer.Append(suffix);
    }
    const char* Text() const noexcept { return text_; }

private:
    char text_[256];
};

template <class Value>
void WriteValue(KeyValueStore& store, const pfParameter& parameter, std::string_view suffix,
                Value value) noexcept {
    store.Write(ValueName(parameter, suffix).Text(), ValueKind::Binary, &value, sizeof value);
}

template <class Value>
bool ReadValue(KeyValueStore& store, const pfParameter& parameter, std::string_view suffix,
               Value& value) noexcept {
    return store.ReadExactly(ValueName(parameter, suffix).Text(), value);
}

void WriteParameter(const pfParameter* parameter, KeyValueStore& store) noexcept {
    if (const auto* position = dynamic_cast<const pfParameterPosition*>(parameter)) {
        WriteValue(store, *parameter, "_X", position->GetX());
        WriteValue(store, *parameter, "_Y", position->GetY());
    } else if (const auto* flag = dynamic_cast<const pfParameterBool*>(parameter)) {
        WriteValue(store, *parameter, "", static_cast<std::uint8_t>(flag->Get() ? 1 : 0));
    } else if (const auto* whole = dynamic_cast<const pfParameterInt*>(parameter)) {
        WriteValue(store, *parameter, "", whole->Get());
    } else if (const auto* number = dynamic_cast<const pfParameterFloat*>(parameter)) {
        WriteValue(store, *parameter, "", number->Get());
    } else if (const auto* color = dynamic_cast<const pfParameterRGB*>(parameter)) {
        WriteValue(store, *parameter, "_red", color->GetRed());
        WriteValue(store, *parameter, "_green", color->GetGreen());
        WriteValue(store, *parameter, "_blue", color->GetBlue());
    } else if (const auto* list = dynamic_cast<const pfParameterList*>(parameter)) {
        WriteValue(store, *parameter, "", list->Get());
    }
}

void ReadPosition(pfParameterPosition& position, KeyValueStore& store) {
    double x = 0.0;
    double y = 0.0;
    const bool hasX = ReadValue(store, position, "_X", x);
    if (ReadValue(store, position, "_Y", y) && hasX) {
        position.Set(x, y);
    }
}

void ReadColor(pfParameterRGB& color, KeyValueStore& store) {
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    if (ReadValue(store, color, "_red", red) && ReadValue(store, color, "_green", green) &&
        ReadValue(store, color, "_blue", blue)) {
        color.Set(red, green, blue);
    }
}

template <class Stored, class Parameter>
void ReadSingle(Parameter& parameter, KeyValueStore& store) {
    Stored value{};
    if (!ReadValue(store, parameter, "", value)) {
        return;
    }
    if constexpr (sizeof(Stored) == 1) {
        parameter.Set(value != 0);
    } else {
        parameter.Set(value);
    }
}

void ReadParameter(pfParameter* parameter, KeyValueStore& store) {
    if (auto* position = dynamic_cast<pfParameterPosition*>(parameter)) {
        ReadPosition(*position, store);
    } else if (auto* flag = dynamic_cast<pfParameterBool*>(parameter)) {
        ReadSingle<std::uint8_t>(*flag, store);
    } else if (auto* whole = dynamic_cast<pfParameterInt*>(parameter)) {
        ReadSingle<std::int32_t>(*whole, store);
    } else if (auto* number = dynamic_cast<pfParameterFloat*>(parameter)) {
        ReadSingle<double>(*number, store);
    } else if (auto* color = dynamic_cast<pfParameterRGB*>(parameter)) {
        ReadColor(*color, store);
    } else if (auto* list = dynamic_cast<pfParameterList*>(parameter)) {
        ReadSingle<std::int32_t>(*list, store);
    }
}

}  // namespace

void WriteLastUsed(const pfParameters& parameters, KeyValueStore& store) noexcept {
    for (int i = 0; i < parameters.GetCount(); ++i) {
        const pfParameter* parameter = parameters.GetParameter(i);
        if (parameter != nullptr && parameter->GetPersistent()) {
            WriteParameter(parameter, store);
        }
    }
}

void ReadLastUsed(const pfParameters& parameters, KeyValueStore& store) {
    for (int i = 0; i < parameters.GetCount(); ++i) {
        pfParameter* parameter = parameters.GetParameter(i);
        if (parameter != nullptr && parameter->GetPersistent()) {
            ReadParameter(parameter, store);
        }
    }
}

}  // namespace mv
