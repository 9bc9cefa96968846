#pragma once

#include <string>
#include <string_view>

namespace vocalith {

/// Without the white space and line breaks around it, as Unicode defines them (no-break and ideographic spaces too).
std::string_view trimmedView(std::string_view utf8);

inline std::string trimmed(std::string_view utf8)
{
    return std::string(trimmedView(utf8));
}

} // namespace vocalith
