#include "doctor/ByteView.h"

namespace mv::host {

std::string CodeText(std::uint32_t code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        text += static_cast<char>(code >> shift & 0xFF);
    }
    return Printable(text);
}

std::string Printable(const std::string& text) {
    std::string result = text;
    for (char& character : result) {
        if (character < ' ' || character > '~') {
            character = '?';
        }
    }
    return result;
}

}  // namespace mv::host
