#include "device/fields.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <stdexcept>
#include <string>

namespace zvr::sim {

std::vector<std::string_view> partsOf(std::string_view text) {
    std::vector<std::string_view> parts;
    for (std::size_t end = 0; end != std::string_view::npos; text.remove_prefix(std::min(end + 1, text.size()))) {
        end = text.find(':');
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) break;
    }
    return parts;
}

double realOf(std::string_view text, int most) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !(std::abs(number) <= most)) {
        throw std::invalid_argument("\"" + std::string(text) + "\" is not a number up to " + std::to_string(most));
    }
    return number;
}

std::vector<std::size_t> choiceOf(std::string_view text, std::size_t count) {
    const bool all = text == "*";
    const auto one = static_cast<std::size_t>(text.size() == 1 ? text[0] - '0' : -1);
    std::vector<std::size_t> chosen(all ? count : one < count ? 1 : 0, one);
    if (all) std::iota(chosen.begin(), chosen.end(), std::size_t{0});
    return chosen;
}

}  // namespace zvr::sim
