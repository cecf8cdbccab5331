// A preset's block as parameters: writing their values out as lines, and taking them from tokens.
#pragma once

#include <string>
#include <string_view>

namespace mv {

class PresetTokens;
class pfParameter;
class pfParameters;
class pfUndoBuffer;

// One line for each persistent parameter, in the order of the set.
void AppendParameterLines(std::string& text, const pfParameters& parameters);

// Takes pairs of key and value up to the next block or the end of the text, as one undo step if
// there is a buffer, and validates every parameter afterwards. A key that no parameter has is
// skipped with its value; a value that the text breaks off leaves its parameter as it was.
void LoadParameterLines(PresetTokens& tokens, pfParameters& parameters, pfUndoBuffer* undoBuffer);

}  // namespace mv
