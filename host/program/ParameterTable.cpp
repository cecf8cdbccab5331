#include "program/ParameterTable.h"

#include <array>
#include <cctype>
#include <charconv>
#include <cmath>

#include "program/Json.h"

namespace mv::host {
namespace {

constexpr bool kHard = true;
constexpr bool kSoft = false;

constexpr std::string_view kModes[] = {"normal", "abberative"};

constexpr std::string_view kBlendModes[] = {
    "normal",    "max weight", "screen",     "overlay",       "addition",      "subtraction",
    "multiply",  "divide",     "difference", "exclusion",     "lighten",       "darken",
    "maximum",   "minimum",    "hue",        "saturation",    "color",         "luminosity",
    "alpha add", "alpha sub",  "alpha mult", "alpha replace", "(none) replace"};

constexpr std::string_view kViews[] = {"normal", "selected image", "selection only",
                                       "size selection"};

constexpr ParameterInfo Number(std::string_view name, std::string_view option,
                               std::string_view alias, std::string_view key, double standard,
                               double minimum, bool minimumIsHard, double maximum,
                               bool maximumIsHard, std::string_view meaning) {
    return {name,    ParameterKind::Number, option,  alias,         key, {},     standard,
            minimum, minimumIsHard,         maximum, maximumIsHard, {},  meaning};
}

constexpr ParameterInfo Switch(std::string_view name, std::string_view option, std::string_view key,
                               bool standard, std::string_view meaning) {
    return {name,
            ParameterKind::Switch,
            option,
            {},
            key,
            {},
            standard ? 1.0 : 0.0,
            0.0,
            kHard,
            1.0,
            kHard,
            {},
            meaning};
}

constexpr ParameterInfo Choice(std::string_view name, std::string_view option,
                               std::string_view alias, std::string_view key,
                               std::span<const std::string_view> entries,
                               std::string_view meaning) {
    return {name,   ParameterKind::Choice,
            option, alias,
            key,    {},
            1.0,    1.0,
            kHard,  static_cast<double>(entries.size()),
            kHard,  entries,
            meaning};
}

constexpr ParameterInfo kParameters[] = {
    {"Origin",
     ParameterKind::Position,
     "origin",
     {},
     "ORIX",
     "ORIY",
     0.5,
     0.0,
     kSoft,
     1.0,
     kSoft,
     {},
     "the centre of the blur"},
    Number("Intensity", "intensity", {}, "INTE", 1.0, 0.0, kHard, 5.0, kSoft,
           "brightness of the blurred image"),
    Number("Strength", "strength", {}, "STRE", 0.25, 0.0, kHard, 1.0, kSoft,
           "length of the streaks"),
    Number("ZoomStart", "start", "zoom-start", "ZOST", 0.5, -0.5, kSoft, 0.5, kSoft,
           "where a streak lies around its pixel"),
    Number("HoldoutRadius", "holdout", "holdout-radius", "HORA", 0.0, 0.0, kHard, 1.0, kSoft,
           "radius around the centre that stays sharp, in half diagonals"),
    Choice("Mode", "mode", {}, "MODE", kModes,
           "plain streaks, or streaks that run through colours"),
    Switch("InvertGradient", "invert-gradient", "INGR", false,
           "turn the colours of abberative streaks around"),
    Switch("GammaCorrection", "gamma-correction", "GAMA", true, "blur in linear light"),
    Number("Contrast", "contrast", {}, "CONT", 0.0, 0.0, kHard, 2.0, kSoft,
           "contrast of the blurred image"),
    Number("GammaCorrectionCorrective", "gamma", "gamma-correction-corrective", "GAMC", 1.0, 0.0,
           kHard, 3.0, kSoft, "gamma of the blurred image"),
    Number("Hue", "hue", {}, "HSLH", 0.0, -1.0, kHard, 1.0, kHard, "hue of the blurred image"),
    Number("Saturation", "saturation", {}, "HSLS", 0.0, -1.0, kHard, 1.0, kHard,
           "saturation of the blurred image"),
    Number("Lightness", "lightness", {}, "HSLL", 0.0, -1.0, kHard, 1.0, kHard,
           "lightness of the blurred image"),
    Number("SelectionLow", "low", "selection-low", "SELL", 0.0, 0.0, kHard, 255.0, kHard,
           "darkest brightness that is blurred"),
    Number("SelectionHigh", "high", "selection-high", "SELH", 255.0, 0.0, kHard, 255.0, kHard,
           "lightest brightness that is blurred"),
    Number("SelectionSoften", "soften", "selection-soften", "SELS", 0.0, 0.0, kHard, 3.0, kHard,
           "softness of the two limits"),
    Number("SelectionClimax", "climax", "selection-climax", "SELC", 1.0, -1.0, kHard, 1.0, kHard,
           "where between the limits the weight is greatest"),
    Switch("UseSizeSelection", "use-size-selection", "USES", false,
           "the mask sets the length of the streaks"),
    Choice("BlendMode", "blend", "blend-mode", "BLND", kBlendModes,
           "how the result is put over the picture"),
    Choice("SelectionShow", "show", "selection-show", "SHOW", kViews, "what the result shows"),
};

std::string OptionText(const ParameterInfo& parameter) {
    return "--" + std::string(parameter.option);
}

// A finite number in the "C" locale's spelling with nothing behind it; a plus sign is welcome.
std::optional<double> ReadNumber(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
        return {};
    }
    return value;
}

// Entry names are compared without case, and blanks, '-' and '_' count as the same.
std::string Normalized(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (character == ' ' || character == '-' || character == '_') {
            result += '-';
        } else if (character != '(' && character != ')') {
            result += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
        }
    }
    return result;
}

bool IsBeyondHardBound(const ParameterInfo& parameter, double value) {
    return (parameter.minimumIsHard && value < parameter.minimum) ||
           (parameter.maximumIsHard && value > parameter.maximum);
}

std::optional<std::string> ReadPosition(const ParameterInfo& parameter, const std::string& text,
                                        ScriptValues& values) {
    const std::size_t comma = text.find(',');
    if (comma != std::string::npos) {
        const std::optional<double> x = ReadNumber(std::string_view(text).substr(0, comma));
        const std::optional<double> y = ReadNumber(std::string_view(text).substr(comma + 1));
        if (x && y) {
            SetValue(values, KeyOf(parameter.key), *x);
            SetValue(values, KeyOf(parameter.secondKey), *y);
            return {};
        }
    }
    return OptionText(parameter) + ": '" + text +
           "' is not a position; give two numbers like 0.3,0.6";
}

std::optional<std::string> ReadChoice(const ParameterInfo& parameter, const std::string& text,
                                      ScriptValues& values) {
    const std::string wanted = Normalized(text);
    for (std::size_t i = 0; i < parameter.entries.size(); ++i) {
        if (wanted == Normalized(parameter.entries[i]) || wanted == std::to_string(i + 1)) {
            SetValue(values, KeyOf(parameter.key), static_cast<std::int32_t>(i + 1));
            return {};
        }
    }
    return OptionText(parameter) + ": there is no '" + text + "'; choose from " +
           RangeText(parameter);
}

std::string ShortestText(double value) {
    std::array<char, 32> buffer;
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return std::string(buffer.data(), end);
}

std::string_view KindText(ParameterKind kind) {
    switch (kind) {
        case ParameterKind::Position:
            return "position";
        case ParameterKind::Number:
            return "number";
        case ParameterKind::Switch:
            return "switch";
        case ParameterKind::Choice:
            break;
    }
    return "choice";
}

void WriteBound(JsonWriter& json, const char* name, double value, bool isHard) {
    json.Key(name).BeginObject();
    json.Key("value").Number(value);
    json.Key("hard").Boolean(isHard);
    json.EndObject();
}

void WriteDefault(JsonWriter& json, const ParameterInfo& parameter) {
    json.Key("default");
    switch (parameter.kind) {
        case ParameterKind::Position:
            json.BeginArray().Number(parameter.standard).Number(parameter.standard).EndArray();
            break;
        case ParameterKind::Switch:
            json.Boolean(parameter.standard != 0.0);
            break;
        case ParameterKind::Number:
        case ParameterKind::Choice:
            json.Number(parameter.standard);
            break;
    }
}

}  // namespace

std::span<const ParameterInfo> Parameters() {
    return kParameters;
}

hostapi::OSType KeyOf(std::string_view text) {
    hostapi::OSType key = 0;
    for (const char character : text) {
        key = (key << 8) | static_cast<unsigned char>(character);
    }
    return key;
}

std::string ValueText(const ParameterInfo& parameter, const ScriptValue& value) {
    if (const auto* const number = std::get_if<double>(&value)) {
        return ShortestText(*number);
    }
    if (const auto* const flag = std::get_if<bool>(&value)) {
        return *flag ? "on" : "off";
    }
    const auto* const entry = std::get_if<std::int32_t>(&value);
    return entry != nullptr ? EntryText(parameter, *entry) : "";
}

std::string EntryText(const ParameterInfo& parameter, int value) {
    if (value < 1 || static_cast<std::size_t>(value) > parameter.entries.size()) {
        return std::to_string(value);
    }
    return std::string(parameter.entries[static_cast<std::size_t>(value - 1)]);
}

std::string RangeText(const ParameterInfo& parameter) {
    const std::string minimum = ShortestText(parameter.minimum);
    const std::string maximum = ShortestText(parameter.maximum);
    switch (parameter.kind) {
        case ParameterKind::Position:
            return "two numbers, 0,0 is the top left corner and 1,1 the bottom right one";
        case ParameterKind::Switch:
            return "on or off";
        case ParameterKind::Choice: {
            std::string text;
            for (std::size_t i = 0; i < parameter.entries.size(); ++i) {
                text += (i == 0 ? "" : ", ") + std::to_string(i + 1) + " " +
                        std::string(parameter.entries[i]);
            }
            return text;
        }
        case ParameterKind::Number:
            break;
    }
    if (parameter.minimumIsHard && parameter.maximumIsHard) {
        return minimum + " to " + maximum;
    }
    if (parameter.minimumIsHard) {
        return minimum + " or more, usually up to " + maximum;
    }
    return "any number, usually " + minimum + " to " + maximum;
}

std::string DefaultText(const ParameterInfo& parameter) {
    const std::string number = ShortestText(parameter.standard);
    switch (parameter.kind) {
        case ParameterKind::Position:
            return number + "," + number;
        case ParameterKind::Switch:
            return parameter.standard != 0.0 ? "on" : "off";
        case ParameterKind::Choice:
            return EntryText(parameter, static_cast<int>(parameter.standard));
        case ParameterKind::Number:
            break;
    }
    return number;
}

std::optional<std::string> ReadValue(const ParameterInfo& parameter, const std::string& text,
                                     ScriptValues& values) {
    switch (parameter.kind) {
        case ParameterKind::Position:
            return ReadPosition(parameter, text, values);
        case ParameterKind::Choice:
            return ReadChoice(parameter, text, values);
        case ParameterKind::Switch:
            SetValue(values, KeyOf(parameter.key), text == "true");
            return {};
        case ParameterKind::Number:
            break;
    }
    const std::optional<double> value = ReadNumber(text);
    if (!value) {
        return OptionText(parameter) + ": '" + text + "' is not a number; give " +
               RangeText(parameter);
    }
    if (IsBeyondHardBound(parameter, *value)) {
        return OptionText(parameter) + ": " + text + " is out of range; give " +
               RangeText(parameter);
    }
    SetValue(values, KeyOf(parameter.key), *value);
    return {};
}

std::string ListParametersText() {
    std::string text;
    for (const ParameterInfo& parameter : kParameters) {
        text += std::string(parameter.name) + "\n  option   " + OptionText(parameter);
        if (!parameter.alias.empty()) {
            text += ", --" + std::string(parameter.alias);
        }
        if (parameter.kind == ParameterKind::Switch) {
            text += ", --no-" + std::string(parameter.option);
        }
        text += "\n  key      " + std::string(parameter.key);
        if (!parameter.secondKey.empty()) {
            text += ", " + std::string(parameter.secondKey);
        }
        text += "\n  range    " + RangeText(parameter);
        text += "\n  default  " + DefaultText(parameter);
        text += "\n  meaning  " + std::string(parameter.meaning) + "\n";
    }
    return text;
}

std::string ListParametersJson() {
    JsonWriter json;
    json.BeginArray();
    for (const ParameterInfo& parameter : kParameters) {
        json.BeginObject();
        json.Key("name").Text(parameter.name);
        json.Key("kind").Text(KindText(parameter.kind));
        json.Key("option").Text(OptionText(parameter));
        if (!parameter.alias.empty()) {
            json.Key("alias").Text("--" + std::string(parameter.alias));
        }
        json.Key("keys").BeginArray().Text(parameter.key);
        if (!parameter.secondKey.empty()) {
            json.Text(parameter.secondKey);
        }
        json.EndArray();
        if (parameter.kind == ParameterKind::Number) {
            WriteBound(json, "minimum", parameter.minimum, parameter.minimumIsHard);
            WriteBound(json, "maximum", parameter.maximum, parameter.maximumIsHard);
        }
        WriteDefault(json, parameter);
        if (!parameter.entries.empty()) {
            json.Key("entries").BeginArray();
            for (const std::string_view entry : parameter.entries) {
                json.Text(entry);
            }
            json.EndArray();
        }
        json.Key("range").Text(RangeText(parameter));
        json.Key("meaning").Text(parameter.meaning);
        json.EndObject();
    }
    json.EndArray();
    return json.Take();
}

}  // namespace mv::host
