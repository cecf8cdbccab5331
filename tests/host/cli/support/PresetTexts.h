// What preset files hold, written out by hand.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/TestFiles.h"

namespace mv::host::test {

// The twenty lines of a block in their order, with the values of a fresh filter.
inline const std::vector<std::pair<std::string, std::string>>& StandardLines() {
    static const std::vector<std::pair<std::string, std::string>> lines = {
        {"Origin", "0.500000 0.500000"},
        {"Intensity", "1.000000"},
        {"Strength", "0.250000"},
        {"ZoomStart", "0.500000"},
        {"HoldoutRadius", "0.000000"},
        {"Mode", "1"},
        {"InvertGradient", "0"},
        {"GammaCorrection", "1"},
        {"Contrast", "0.000000"},
        {"GammaCorrectionCorrective", "1.000000"},
        {"Hue", "0.000000"},
        {"Saturation", "0.000000"},
        {"Lightness", "0.000000"},
        {"SelectionLow", "0.000000"},
        {"SelectionHigh", "255.000000"},
        {"SelectionSoften", "0.000000"},
        {"SelectionClimax", "1.000000"},
        {"UseSizeSelection", "0"},
        {"BlendMode", "1"},
        {"SelectionShow", "1"}};
    return lines;
}

using Changes = std::map<std::string, std::string>;

inline std::string Lines(const Changes& changes = {}) {
    std::string text;
    for (const auto& [name, standard] : StandardLines()) {
        const auto change = changes.find(name);
        text.append(name).append(" ").append(change != changes.end() ? change->second : standard);
        text.append("\n");
    }
    return text;
}

inline constexpr const char* kOwnerLine = "FileOwner RadialBlur\n";

inline std::string Block(const std::string& name, const Changes& changes = {}) {
    return "\nname " + name + "\n" + Lines(changes);
}

// What a text file of this system holds for lines that end in a line feed.
inline std::string FileText(std::string_view text) {
#ifdef _WIN32
    std::string result;
    for (const char character : text) {
        result += character == '\n' ? std::string("\r\n") : std::string(1, character);
    }
    return result;
#else
    return std::string(text);
#endif
}

inline std::string ReadText(const std::filesystem::path& path) {
    const Bytes bytes = ReadBytes(path);
    return std::string(bytes.begin(), bytes.end());
}

}  // namespace mv::host::test
