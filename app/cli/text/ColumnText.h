#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vocalith {

/// How many columns of a terminal the text takes; East Asian characters and pictures take two.
std::size_t columnsOf(std::string_view utf8);

/// The text, or as much of its beginning as takes no more than that many columns, with "…" at the end.
std::string fitted(std::string_view utf8, std::size_t columns);

} // namespace vocalith
