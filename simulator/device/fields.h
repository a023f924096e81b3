// Texts that are lists of fields with colons between them.
#pragma once

#include <string_view>
#include <vector>

namespace zvr::sim {

std::vector<std::string_view> partsOf(std::string_view text);

/// A number of at most this size. Throws std::invalid_argument.
double realOf(std::string_view text, int most);

/// The one that is named, or with * all; none if there is no such one.
std::vector<std::size_t> choiceOf(std::string_view text, std::size_t count);

}  // namespace zvr::sim
