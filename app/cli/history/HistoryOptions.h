#pragma once

#include "app/cli/recognition/RecognitionOptions.h"
#include "base/Date.h"
#include "models/TranscriptExport.h"

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vocalith {

/// What of the history a command is about.
struct HistorySelection {
    enum class Kind { all, dictation, files, journal };
    Kind kind = Kind::all;
    std::string prompt; ///< name or identifier; empty for any
    std::string query;
};

/// `list` and `search`
struct HistoryListOptions {
    HistorySelection selection;
    std::size_t limit = 20;
    std::string before; ///< the entry that the page before this one ended with; empty for the first page
    bool oldestFirst = false;
    bool json = false;
};

struct HistoryShowOptions {
    std::string id;
    bool json = false;
};

struct HistoryPlayOptions {
    std::string id;
};

struct HistoryCopyOptions {
    std::string id;
};

struct HistoryRetryOptions {
    std::string id;
    RecognitionOptions recognition;
};

struct HistoryDeleteOptions {
    std::vector<std::string> ids;
    bool all = false;
    bool yes = false; ///< without asking
};

struct HistoryExportOptions {
    /// The whole entry in its stored form.
    struct EntryFormat {};
    using Format = std::variant<ExportFormat, EntryFormat>;

    std::vector<std::string> ids; ///< empty for all that the selection lets through
    HistorySelection selection;
    std::optional<Date> since;
    std::optional<Date> until;    ///< entries created before it
    std::optional<Format> format; ///< absent: the name of the output decides
    std::filesystem::path output; ///< a file, a folder, or empty for standard output
    bool force = false;           ///< replace files that exist
};

struct HistoryCleanupOptions {
    bool dryRun = false;
};

using HistoryOptions =
    std::variant<HistoryListOptions, HistoryShowOptions, HistoryPlayOptions, HistoryCopyOptions, HistoryRetryOptions,
                 HistoryDeleteOptions, HistoryExportOptions, HistoryCleanupOptions>;

} // namespace vocalith
