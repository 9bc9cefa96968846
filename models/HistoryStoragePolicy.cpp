#include "models/HistoryStoragePolicy.h"

namespace vocalith {
namespace {

using Days = std::chrono::days;

constexpr Days kMonth{30};
constexpr Days kYear{365};

} // namespace

std::string_view label(HistoryStoragePolicy policy)
{
    switch (policy) {
    case HistoryStoragePolicy::disabled: return "Don't save history";
    case HistoryStoragePolicy::twelveHours: return "Keep for 12 hours";
    case HistoryStoragePolicy::oneDay: return "Keep for 1 day";
    case HistoryStoragePolicy::threeDays: return "Keep for 3 days";
    case HistoryStoragePolicy::oneWeek: return "Keep for 1 week";
    case HistoryStoragePolicy::oneMonth: return "Keep for 1 month";
    case HistoryStoragePolicy::threeMonths: return "Keep for 3 months";
    case HistoryStoragePolicy::sixMonths: return "Keep for 6 months";
    case HistoryStoragePolicy::oneYear: return "Keep for 1 year";
    case HistoryStoragePolicy::forever: return "Keep forever";
    }
    return "";
}

std::optional<std::chrono::seconds> retention(HistoryStoragePolicy policy)
{
    switch (policy) {
    case HistoryStoragePolicy::disabled: return std::nullopt;
    case HistoryStoragePolicy::twelveHours: return std::chrono::hours(12);
    case HistoryStoragePolicy::oneDay: return Days(1);
    case HistoryStoragePolicy::threeDays: return Days(3);
    case HistoryStoragePolicy::oneWeek: return Days(7);
    case HistoryStoragePolicy::oneMonth: return kMonth;
    case HistoryStoragePolicy::threeMonths: return 3 * kMonth;
    case HistoryStoragePolicy::sixMonths: return 6 * kMonth;
    case HistoryStoragePolicy::oneYear: return kYear;
    case HistoryStoragePolicy::forever: return std::nullopt;
    }
    return std::nullopt;
}

} // namespace vocalith
