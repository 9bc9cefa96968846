#pragma once

#include "base/Date.h"

#include <optional>
#include <string>
#include <string_view>

namespace vocalith {

/// "2026-03-01T12:00:00.000Z": UTC with milliseconds. Years outside 0000 to 9999, which the form cannot say, become the
/// nearest date that it can.
std::string toIso8601(Date date);

/// Reads `yyyy-MM-ddTHH:mm:ss`, with any number of decimals (cut off after the milliseconds) and with `Z` or an offset
/// such as `+02:00` or `+0200`, in upper or lower case.
std::optional<Date> dateFromIso8601(std::string_view text);

} // namespace vocalith
