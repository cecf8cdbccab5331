// What somebody meant whose finger slipped.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mv::host {

// The known word that is two slips away at most, or nothing. A slip changes a letter, puts one in,
// takes one out, or swaps two neighbours.
std::string NearestWord(std::string_view word, const std::vector<std::string>& known);

}  // namespace mv::host
