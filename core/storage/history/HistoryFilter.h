#pragma once

#include "base/Uuid.h"

#include <string>
#include <variant>

namespace vocalith {

/// Which entries of the history are shown.
namespace history_filter {

struct All {
    bool operator==(const All&) const = default;
};
struct Dictation {
    bool operator==(const Dictation&) const = default;
};
struct Files {
    bool operator==(const Files&) const = default;
};
struct Journal {
    bool operator==(const Journal&) const = default;
};
/// The entries made with that prompt.
struct AIPromptEntries {
    Uuid promptID;
    bool operator==(const AIPromptEntries&) const = default;
};

} // namespace history_filter

using HistoryFilterMode = std::variant<history_filter::All, history_filter::Dictation, history_filter::Files,
                                       history_filter::Journal, history_filter::AIPromptEntries>;

enum class HistorySortOrder { newestFirst, oldestFirst };

struct HistoryFilter {
    HistoryFilterMode mode;
    /// Sought as it stands, anywhere in transcript, final text, prompt name and error message, whatever the case and
    /// the accents. Empty for all.
    std::string searchQuery;
    HistorySortOrder sortOrder = HistorySortOrder::newestFirst;

    bool operator==(const HistoryFilter&) const = default;
};

} // namespace vocalith
