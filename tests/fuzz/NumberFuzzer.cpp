// Numbers as users type them and as preset files hold them, against the C library's own reading.
#include <cmath>
#include <cstdlib>

#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "interface/ControlValues.h"
#include "interface/NumberText.h"
#include "parameters/NumberText.h"

namespace {

using fuzzing::Require;

bool Same(double a, double b) {
    return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
}

// The C library takes hexadecimal numbers and "nan(...)" too, which preset files do not hold.
bool ReadsAlike(const std::string& text) {
    return text.find_first_of("xX(") == std::string::npos && text.find('\0') == std::string::npos;
}

void CheckTyped(const std::string& text) {
    double value = 77.0;
    const bool taken = mv::ParseNumber(text, value);
    Require(taken || value == 77.0, "what is no number changes nothing");
    if (text.find('\0') != std::string::npos || text.find('(') != std::string::npos) {
        return;
    }
    char* end = nullptr;
    const double expected = std::strtod(text.c_str(), &end);
    const bool whole = end != text.c_str() && *end == '\0';
    Require(taken == whole, "a typed text counts exactly when all of it is a number");
    // Among numbers too small or too large to hold, the library keeps the smallest ones.
    if (taken && std::isfinite(expected) && std::fabs(expected) > 1e-300) {
        Require(Same(value, expected), "a typed number has the value that the library reads");
    }
}

void CheckPresetNumber(const std::string& text) {
    const double value = mv::ParseFloat(text);
    const std::int32_t whole = mv::ParseInt(text);
    // A token has no white space in it, which the library would skip.
    if (!ReadsAlike(text) || text.find_first_of(" \t\n\v\f\r") != std::string::npos) {
        return;
    }
    const double expected = std::atof(text.c_str());
    if (expected == 0.0 || (std::isfinite(expected) && std::fabs(expected) > 1e-300)) {
        Require(value == expected, "a number of a preset file is read as the library reads it");
    }
    const long long longer = std::strtoll(text.c_str(), nullptr, 10);
    const long long nearest = longer > INT32_MAX   ? INT32_MAX
                              : longer < INT32_MIN ? INT32_MIN
                                                   : longer;
    Require(whole == nearest, "a whole number is read as the library reads it, within 32 bits");
}

void CheckWriting(double value) {
    std::string text;
    mv::AppendFloat(text, value);
    char expected[512];
    std::snprintf(expected, sizeof expected, "%f", value);
    Require(text == expected || !std::isfinite(value), "floats are written with six decimals");
    char shown[mv::kNumberCapacity];
    mv::FormatNumber(value, shown);
    std::snprintf(expected, sizeof expected, "%.6g", value);
    Require(std::string(shown) == expected || !std::isfinite(value),
            "numbers are shown with six digits");
    double again = 0.0;
    Require(mv::ParseNumber(shown, again), "what is shown can be read");
}

void CheckControls(const std::string& text, double value, std::int32_t size) {
    double fraction = 0.25;
    if (mv::FractionFromPixelText(text, size, fraction)) {
        static_cast<void>(mv::PixelTextMeans(text, size, fraction));
    } else {
        Require(fraction == 0.25, "what is no pixel changes no position");
    }
    char pixel[mv::kNumberCapacity];
    mv::FormatPixel(value, size, pixel);
    const mv::SliderRange range = mv::FloatSliderRange(value, fraction);
    Require(range.page >= 1, "a slider moves");
    static_cast<void>(mv::IntSliderRange(size, size / 2));
    static_cast<void>(mv::FloatSliderDetour(value));
    static_cast<void>(mv::IntSliderDetour(size));
    static_cast<void>(mv::FloatFromSlider(size));
    const mv::FloatLimits limits{-1.0, 1.0, true, true};
    const double limited = mv::LimitTypedValue(value, limits);
    Require(std::isnan(value) || (limited >= -1.0 && limited <= 1.0), "hard limits hold");
    const mv::TurnsAndDegrees angle = mv::SplitAngle(value);
    static_cast<void>(mv::JoinAngle(angle.turns, angle.degrees));
    static_cast<void>(mv::AngleFromPointer(value, fraction, -fraction));
    static_cast<void>(mv::ByteFromChannel(value));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::FuzzInput input(data, size);
    const double value = input.Number();
    const auto extent = input.Flag() ? input.Raw<std::int32_t>() : input.Below(200) - 20;
    const std::string text = input.Rest();
    CheckTyped(text);
    CheckPresetNumber(text);
    CheckWriting(value);
    CheckControls(text, value, extent);
    return 0;
}

std::vector<std::string> fuzzing::Seeds() {
    // The kind of number, its bytes, the size's two bytes, the text.
    const std::string head("\x00\x10\x20\x02\x40", 5);
    std::vector<std::string> seeds;
    for (const char* text :
         {"0.5",
          "-1",
          "+2.5e3",
          "  12",
          "1e400",
          "1e-400",
          "0x1.8p3",
          "inf",
          "-nan",
          "nan(1)",
          "",
          "1,5",
          "12abc",
          "1e",
          "--1",
          "2147483648",
          "-99999999999999999999",
          ".5",
          "5.",
          "0.000000000000000000000000000000000000000000000000000000000000001e70"}) {
        seeds.push_back(head + text);
    }
    return seeds;
}
