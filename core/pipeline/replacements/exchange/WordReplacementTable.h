#pragma once

#include "core/pipeline/replacements/exchange/WordReplacementExchange.h"

#include <string>
#include <string_view>
#include <vector>

namespace vocalith {

/// An entry and where it was found.
struct PlacedReplacement {
    WordReplacement entry;
    ExchangeError place; ///< to be given its message
};

/// The entries of a table; what is wrong with it is added to `errors`. Any thread.
std::vector<PlacedReplacement> readReplacementTable(std::string_view utf8, std::vector<ExchangeError>& errors);

/// With the header line and the line ends of RFC 4180.
std::string writeReplacementTable(const std::vector<WordReplacement>& list);

} // namespace vocalith
