#pragma once

#include "base/Uuid.h"

#include <string>
#include <string_view>

namespace vocalith {

/// The command line of a `vocalith history` action on that entry, for a hint: the beginning of an identifier is enough.
inline std::string historyCommand(std::string_view action, const Uuid& entryID)
{
    constexpr std::size_t kEnough = 8; // characters
    return "vocalith history " + std::string(action) + " " + entryID.toString().substr(0, kEnough);
}

} // namespace vocalith
