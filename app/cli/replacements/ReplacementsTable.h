#pragma once

#include "base/Result.h"
#include "models/WordReplacement.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vocalith {

/// "2  colour, colur  →  color  before AI", an entry a line, with its number.
std::string replacementsTable(const std::vector<WordReplacement>& list);
/// The same of those entries only, by their index.
std::string replacementsTable(const std::vector<WordReplacement>& list, const std::vector<std::size_t>& indices);

/// The index of the entry that is meant by its number (from 1), its identity, what it looks for, or one of its
/// spellings in any case. The error says that there is none, or which ones there are.
Result<std::size_t, std::string> findReplacement(const std::vector<WordReplacement>& list, const std::string& which);

} // namespace vocalith
