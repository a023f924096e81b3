// Texts of fields separated by colons.
#pragma once

#include <string_view>
#include <vector>

namespace zvr::sim {

std::vector<std::string_view> partsOf(std::string_view text);

/// A number of at most this size. Throws std::invalid_argument.
double realOf(std::string_view text, int most);

/// The number that is named, or all for *; empty if there is none.
std::vector<std::size_t> choiceOf(std::string_view text, std::size_t count);

}  // namespace zvr::sim
