#pragma once

#include "base/Task.h"
#include "platform/atspi/AtspiBus_p.h"

#include <string>

namespace vocalith {

/// What a window shows as text, in the order of its objects, a line each: at most `limit` characters, without menus and
/// without fields that hide what is typed; what has been said by `deadline`.
Task<std::string> windowText(AtspiBus& bus, AtspiReference window, int limit, Instant deadline);

} // namespace vocalith
