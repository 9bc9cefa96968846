#pragma once

#include "models/HistoryEntry.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vocalith {

/// What the index keeps of an entry.
struct HistoryEntrySummary {
    /// As numbered in the index, which outlives the program.
    enum class Kind { dictation = 0, file = 1, journal = 2 };

    Uuid id;
    Date creationDate;
    Kind kind = Kind::dictation;
    std::optional<Uuid> promptID;
    std::filesystem::path audio; ///< empty when the entry names no local file
    std::string searchText;      ///< all that a search looks at, in the form that `searchForm` gives

    bool operator==(const HistoryEntrySummary&) const = default;
};

HistoryEntrySummary summarize(const HistoryEntry& entry);

} // namespace vocalith
