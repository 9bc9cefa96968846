#pragma once

#include <string>

namespace vocalith {

/// The first, or the last, `limit` characters (code points) of UTF-8 text.
std::string firstCharacters(std::string text, int limit);
std::string lastCharacters(std::string text, int limit);

} // namespace vocalith
