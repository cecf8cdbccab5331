// The text of a preset file: its tokens, its blocks, and what a file becomes when one of them is
// replaced or removed. Nothing here touches a file or a parameter.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mv {

// The reserved words.
inline constexpr std::string_view kOwnerWord = "FileOwner";
inline constexpr std::string_view kBlockWord = "name";

// Reads tokens of any length, runs of characters parted by white space; a NUL is a character like
// any other. The tokens point into the text, which has to stay. A byte order mark at the
// beginning belongs to no token.
class PresetTokens {
public:
    explicit PresetTokens(std::string_view text) noexcept;

    // False at the end of the text; the token is then left alone.
    bool Next(std::string_view& token) noexcept;
    // Right behind the last character of the last token.
    std::size_t Position() const noexcept { return position_; }

private:
    std::string_view text_;
    std::size_t position_;
};

// Reads on until the preset's name has been read; headPosition, if asked for, is the position in
// front of the word "name" then. False at the end of the text.
bool FindPreset(PresetTokens& tokens, std::string_view name,
                std::size_t* headPosition = nullptr) noexcept;

// The text with the preset's parameter lines replaced. The block keeps its place; the empty line
// in front of the next one is not restored. False when there is no such preset.
bool ReplacePreset(std::string_view text, std::string_view name, std::string_view lines,
                   std::string& result);

// The text without the preset. False when there is no such preset.
bool RemovePreset(std::string_view text, std::string_view name, std::string& result);

// A Ctrl-Z that ends the file, as old editors of such systems leave it, is no part of the text.
void DropEndMark(std::string& content) noexcept;

// From what a file holds to lines that end in a line feed alone, and back, for systems whose text
// files have carriage returns as well.
void ToLineFeeds(std::string& content) noexcept;
std::string ToCarriageReturns(std::string_view text);

}  // namespace mv
