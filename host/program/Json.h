// Writes JSON, indented, in UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mv::host {

// Calls follow the document's order; keys and values in objects take turns. One writer makes one
// document.
class JsonWriter {
public:
    JsonWriter& BeginObject();
    JsonWriter& EndObject();
    JsonWriter& BeginArray();
    JsonWriter& EndArray();
    JsonWriter& Key(std::string_view name);
    // Bytes that are no UTF-8 are replaced by U+FFFD, as the format knows text only.
    JsonWriter& Text(std::string_view text);
    // JSON has no infinite and undefined numbers: these become null.
    JsonWriter& Number(double value);
    JsonWriter& Integer(std::int64_t value);
    JsonWriter& Boolean(bool value);
    // The document with a line end behind it.
    std::string Take();

private:
    void Begin(char bracket);
    void End(char bracket);
    void Separate();

    std::string text_;
    std::vector<bool> filled_;  // for each open bracket: something stands in it already
    bool afterKey_ = false;
};

}  // namespace mv::host
