#include "parameters/PresetText.h"

#include <algorithm>

namespace mv {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr char kEndMark = '\x1A';

// White space as in the "C" locale, whatever the process has set.
bool IsBlank(char character) noexcept {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

// Reads on until the next block's word has been read.
bool FindNextBlock(PresetTokens& tokens) noexcept {
    std::string_view token;
    while (tokens.Next(token)) {
        if (token == kBlockWord) {
            return true;
        }
    }
    return false;
}

// Removal copies with the byte 0xFF taken for the end of the file. Meant as it is: files written
// by others are to come out of it the same everywhere. Replacement has no such limit.
std::string_view UpToFalseEnd(std::string_view text) noexcept {
    return text.substr(0, std::min(text.find('\xFF'), text.size()));
}

}  // namespace

PresetTokens::PresetTokens(std::string_view text) noexcept
    : text_(text), position_(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0) {}

bool PresetTokens::Next(std::string_view& token) noexcept {
    std::size_t begin = position_;
    while (begin < text_.size() && IsBlank(text_[begin])) {
        ++begin;
    }
    if (begin == text_.size()) {
        position_ = begin;
        return false;
    }
    std::size_t end = begin;
    while (end < text_.size() && !IsBlank(text_[end])) {
        ++end;
    }
    token = text_.substr(begin, end - begin);
    position_ = end;
    return true;
}

bool FindPreset(PresetTokens& tokens, std::string_view name, std::size_t* headPosition) noexcept {
    std::string_view token;
    for (;;) {
        const std::size_t position = tokens.Position();
        if (!tokens.Next(token)) {
            return false;
        }
        if (token != kBlockWord) {
            continue;
        }
        if (!tokens.Next(token)) {
            return false;
        }
        if (token == name) {
            if (headPosition != nullptr) {
                *headPosition = position;
            }
            return true;
        }
    }
}

bool ReplacePreset(std::string_view text, std::string_view name, std::string_view lines,
                   std::string& result) {
    PresetTokens tokens(text);
    if (!FindPreset(tokens, name)) {
        return false;
    }
    const std::string_view before = text.substr(0, tokens.Position());
    const bool hasNext = FindNextBlock(tokens);
    const std::string_view after = hasNext ? text.substr(tokens.Position()) : std::string_view();
    result.clear();
    result.reserve(before.size() + 1 + lines.size() + kBlockWord.size() + after.size());
    result.append(before).append(1, '\n').append(lines);
    if (hasNext) {
        result.append(kBlockWord).append(after);
    }
    return true;
}

bool RemovePreset(std::string_view text, std::string_view name, std::string& result) {
    PresetTokens tokens(text);
    std::size_t headPosition = 0;
    if (!FindPreset(tokens, name, &headPosition)) {
        return false;
    }
    const std::string_view before = UpToFalseEnd(text.substr(0, headPosition));
    const bool hasNext = FindNextBlock(tokens);
    const std::string_view after =
        hasNext ? UpToFalseEnd(text.substr(tokens.Position())) : std::string_view();
    result.clear();
    result.reserve(before.size() + 2 + kBlockWord.size() + after.size());
    result.append(before);
    if (headPosition > 0) {
        result.append(1, '\n');
    }
    if (hasNext) {
        result.append(1, '\n').append(kBlockWord).append(after);
    }
    return true;
}

void DropEndMark(std::string& content) noexcept {
    if (content.ends_with(kEndMark)) {
        content.pop_back();
    }
}

void ToLineFeeds(std::string& content) noexcept {
    DropEndMark(content);
    std::size_t used = 0;
    std::size_t begin = 0;
    while (begin < content.size()) {
        // Up to the carriage return of the next line end, which stays behind.
        const std::size_t end = std::min(content.find("\r\n", begin), content.size());
        std::copy(content.data() + begin, content.data() + end, content.data() + used);
        used += end - begin;
        begin = end + 1;
    }
    content.resize(used);
}

std::string ToCarriageReturns(std::string_view text) {
    std::string result;
    result.reserve(text.size() +
                   static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
    for (;;) {
        const std::size_t end = text.find('\n');
        result.append(text.substr(0, end));
        if (end == std::string_view::npos) {
            return result;
        }
        result.append("\r\n");
        text.remove_prefix(end + 1);
    }
}

}  // namespace mv
