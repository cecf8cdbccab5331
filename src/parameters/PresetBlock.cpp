#include "parameters/PresetBlock.h"

#include "parameters/NumberText.h"
#include "parameters/PresetText.h"
#include "parameters/pfParameterBool.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterInt.h"
#include "parameters/pfParameterList.h"
#include "parameters/pfParameterPosition.h"
#include "parameters/pfParameterRGB.h"
#include "parameters/pfParameters.h"
#include "parameters/pfUndo.h"
#include "parameters/pfUndoBuffer.h"

namespace mv {

namespace {

void AppendFloatField(std::string& text, double value) {
    text.push_back(' ');
    AppendFloat(text, value);
}

void AppendIntField(std::string& text, std::int32_t value) {
    text.push_back(' ');
    AppendInt(text, value);
}

void AppendFields(std::string& text, const pfParameter& parameter) {
    if (const auto* position = dynamic_cast<const pfParameterPosition*>(&parameter)) {
        AppendFloatField(text, position->GetX());
        AppendFloatField(text, position->GetY());
    } else if (const auto* flag = dynamic_cast<const pfParameterBool*>(&parameter)) {
        AppendIntField(text, flag->Get() ? 1 : 0);
    } else if (const auto* whole = dynamic_cast<const pfParameterInt*>(&parameter)) {
        AppendIntField(text, whole->Get());
    } else if (const auto* number = dynamic_cast<const pfParameterFloat*>(&parameter)) {
        // Meant as it is: this class alone is narrowed, and loses what goes beyond.
        AppendFloatField(text, static_cast<double>(static_cast<float>(number->Get())));
    } else if (const auto* colour = dynamic_cast<const pfParameterRGB*>(&parameter)) {
        AppendFloatField(text, colour->GetRed());
        AppendFloatField(text, colour->GetGreen());
        AppendFloatField(text, colour->GetBlue());
    } else if (const auto* list = dynamic_cast<const pfParameterList*>(&parameter)) {
        AppendIntField(text, list->Get());
    }
}

pfParameter* FindParameter(const pfParameters& parameters, std::string_view name) noexcept {
    for (int i = 0; i < parameters.GetCount(); ++i) {
        if (parameters.GetParameter(i)->GetNameView() == name) {
            return parameters.GetParameter(i);
        }
    }
    return nullptr;
}

// True when the change is to be undoable. The setters compare, store, refresh the control and run
// the change callback, as every class does it; that of a list refuses a bad selection.
bool TakeValue(pfParameter& parameter, std::string_view value, PresetTokens& tokens) {
    if (auto* position = dynamic_cast<pfParameterPosition*>(&parameter)) {
        std::string_view second;
        return tokens.Next(second) && position->Set(ParseFloat(value), ParseFloat(second));
    }
    if (auto* flag = dynamic_cast<pfParameterBool*>(&parameter)) {
        return flag->Set(ParseInt(value) != 0);
    }
    if (auto* whole = dynamic_cast<pfParameterInt*>(&parameter)) {
        return whole->Set(ParseInt(value));
    }
    if (auto* number = dynamic_cast<pfParameterFloat*>(&parameter)) {
        return number->Set(ParseFloat(value));
    }
    if (auto* colour = dynamic_cast<pfParameterRGB*>(&parameter)) {
        std::string_view green;
        std::string_view blue;
        return tokens.Next(green) && tokens.Next(blue) &&
               colour->Set(ParseFloat(value), ParseFloat(green), ParseFloat(blue));
    }
    auto* const list = dynamic_cast<pfParameterList*>(&parameter);
    return list != nullptr && list->Set(ParseInt(value));
}

void LoadParameter(pfParameter& parameter, std::string_view value, PresetTokens& tokens,
                   pfUndoBuffer* undoBuffer) {
    pfUndo* const record = undoBuffer != nullptr ? parameter.CreateUndo() : nullptr;
    if (TakeValue(parameter, value, tokens) && undoBuffer != nullptr) {
        undoBuffer->Push(record);
    } else {
        pfUndo::Release(record);
    }
}

}  // namespace

void AppendParameterLines(std::string& text, const pfParameters& parameters) {
    for (int i = 0; i < parameters.GetCount(); ++i) {
        const pfParameter& parameter = *parameters.GetParameter(i);
        if (parameter.GetPersistent()) {
            text.append(parameter.GetNameView());
            AppendFields(text, parameter);
            text.push_back('\n');
        }
    }
}

void LoadParameterLines(PresetTokens& tokens, pfParameters& parameters, pfUndoBuffer* undoBuffer) {
    std::string_view key;
    std::string_view value;
    // The test stands ahead of the reading: the pair that begins the next block is taken from the
    // text as well, and no parameter has that key.
    while (key != kBlockWord && tokens.Next(key) && tokens.Next(value)) {
        if (pfParameter* const parameter = FindParameter(parameters, key); parameter != nullptr) {
            LoadParameter(*parameter, value, tokens, undoBuffer);
        }
    }
    if (undoBuffer != nullptr) {
        undoBuffer->NextStep();
    }
    // Values are stored first and pulled into their ranges last.
    parameters.ValidateAll();
}

}  // namespace mv
