#pragma once

#include "base/Date.h"
#include "base/Result.h"

#include <string>

namespace vocalith {

/// "2026-01-31 09:05" in the time of this place.
std::string localDateAndTime(Date date);
/// "2026-01-31-090503" in the time of this place, for the name of a file.
std::string localTimestamp(Date date);

/// "0:42", "1:02:05"
std::string durationText(double seconds);

/// A stretch of time, `end` excluded.
struct Period {
    Date begin;
    Date end;
    bool operator==(const Period&) const = default;
};

/// What a user means by "2026-01-31" (that day, in the time of this place) or "2026-01-31T09:05" (that minute). The
/// error says what can be written.
Result<Period, std::string> periodNamed(const std::string& text);

} // namespace vocalith
