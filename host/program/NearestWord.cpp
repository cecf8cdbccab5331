#include "program/NearestWord.h"

#include <algorithm>

namespace mv::host {
namespace {

constexpr std::size_t kMostSlips = 2;
constexpr std::size_t kLongest = 60;  // Longer words are no slips of the finger.

// Slips from one word to the other, from the beginnings of both to their ends.
std::size_t Slips(std::string_view from, std::string_view to) {
    std::vector<std::vector<std::size_t>> best(from.size() + 1,
                                               std::vector<std::size_t>(to.size() + 1));
    for (std::size_t i = 0; i <= from.size(); ++i) {
        for (std::size_t j = 0; j <= to.size(); ++j) {
            if (i == 0 || j == 0) {
                best[i][j] = i + j;
                continue;
            }
            const std::size_t change = from[i - 1] == to[j - 1] ? 0 : 1;
            best[i][j] =
                std::min({best[i - 1][j] + 1, best[i][j - 1] + 1, best[i - 1][j - 1] + change});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                best[i][j] = std::min(best[i][j], best[i - 2][j - 2] + 1);
            }
        }
    }
    return best[from.size()][to.size()];
}

}  // namespace

std::string NearestWord(std::string_view word, const std::vector<std::string>& known) {
    std::string nearest;
    std::size_t fewest = kMostSlips + 1;
    if (word.size() > kLongest) {
        return nearest;
    }
    for (const std::string& candidate : known) {
        if (const std::size_t slips = Slips(word, candidate); slips < fewest) {
            fewest = slips;
            nearest = candidate;
        }
    }
    return nearest;
}

}  // namespace mv::host
