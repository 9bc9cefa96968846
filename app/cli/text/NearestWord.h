#pragma once

#include <string>
#include <vector>

namespace vocalith {

/// The word that was most likely meant; empty when none is near.
std::string nearestWord(const std::string& typed, const std::vector<std::string>& words);

} // namespace vocalith
