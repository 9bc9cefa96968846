#pragma once

#include "core/storage/history/HistoryFilter.h"
#include "models/HistoryEntry.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// Where a page ended: the next one begins behind it.
struct HistoryCursor {
    Date creationDate;         ///< of the last entry of the page
    std::int64_t position = 0; ///< tells it from others of the same instant
    bool operator==(const HistoryCursor&) const = default;
};

struct HistoryPageRequest {
    HistoryFilter filter;
    std::optional<HistoryCursor> after; ///< absent for the first page
    std::size_t size = 30;              ///< entries at most
};

struct HistoryPage {
    std::vector<HistoryEntry> entries; ///< in the filter's order
    std::optional<HistoryCursor> next; ///< absent when nothing follows

    bool operator==(const HistoryPage&) const = default;
};

/// A file of the history that cannot be read as an entry. It is left alone.
struct UnreadableEntry {
    std::filesystem::path file;
    std::string reason; ///< for people

    bool operator==(const UnreadableEntry&) const = default;
};

/// What a deletion has done.
struct HistoryDeletion {
    std::size_t entries = 0;
    std::size_t recordings = 0;
    std::vector<Uuid> failed; ///< entries whose file could not be removed

    bool operator==(const HistoryDeletion&) const = default;
};

} // namespace vocalith
