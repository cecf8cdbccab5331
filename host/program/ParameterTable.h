// The filter's parameters as the command line sees them. This table is the one source for options,
// help and --list-parameters.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "ScriptValues.h"

namespace mv::host {

enum class ParameterKind { Position, Number, Switch, Choice };

struct ParameterInfo {
    std::string_view name;
    ParameterKind kind;
    std::string_view option;  // without the dashes; the word that the filter's dialog uses
    std::string_view alias;   // a second spelling, or empty
    std::string_view key;     // script key; for a position that of x
    std::string_view secondKey;
    double standard;  // the value that a fresh module has; a switch counts 0 or 1
    double minimum;
    bool minimumIsHard;  // a value beyond a hard bound is refused; a soft one is only advice
    double maximum;
    bool maximumIsHard;
    std::span<const std::string_view> entries;  // of a choice, counted from 1
    std::string_view meaning;
};

std::span<const ParameterInfo> Parameters();

// "0 or more (usually up to 5)", "-1 to 1", "X,Y as parts of the size; 0,0 is the top left", ...
std::string RangeText(const ParameterInfo& parameter);
// "0.25", "0.5,0.5", "normal", "off".
std::string DefaultText(const ParameterInfo& parameter);
// The script key of a parameter as the number that travels.
hostapi::OSType KeyOf(std::string_view key);
// A value as its option takes it: "0.25", "on", "normal".
std::string ValueText(const ParameterInfo& parameter, const ScriptValue& value);
// "normal" for 1, or the number where it names no entry.
std::string EntryText(const ParameterInfo& parameter, int value);

// Reads an option's value and appends it to `values` under the parameter's keys. Otherwise gives
// a sentence that names the option, what it got and what it takes.
std::optional<std::string> ReadValue(const ParameterInfo& parameter, const std::string& text,
                                     ScriptValues& values);

// The whole table as text for people and as JSON.
std::string ListParametersText();
std::string ListParametersJson();

}  // namespace mv::host
