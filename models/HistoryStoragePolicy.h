#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace vocalith {

/// Whether dictations are saved, and for how long. The names are the stored form.
enum class HistoryStoragePolicy {
    disabled,
    twelveHours,
    oneDay,
    threeDays,
    oneWeek,
    oneMonth,
    threeMonths,
    sixMonths,
    oneYear,
    forever,
};

/// As the user is offered it: "Keep for 12 hours".
std::string_view label(HistoryStoragePolicy policy);

/// How old an entry may become; months have 30 days and the year 365. Nothing where no entry is ever too old: with
/// `forever`, and with `disabled`, which saves no new entries and leaves those that are there alone.
std::optional<std::chrono::seconds> retention(HistoryStoragePolicy policy);

} // namespace vocalith
