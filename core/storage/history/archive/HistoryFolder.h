#pragma once

#include "base/AtomicFile.h"
#include "core/storage/history/HistoryError.h"
#include "models/HistoryEntry.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// Tells whether a file is still the one that was read: its time of change in nanoseconds since 1970 and its size.
struct FileStamp {
    std::int64_t modified = 0;
    std::int64_t size = 0;
    bool operator==(const FileStamp&) const = default;
};

/// A file of the history: "2026-01-31/0A1B….json", relative to the history's folder.
struct HistoryFile {
    std::string path;
    FileStamp stamp;
};

/// The files of the history: a folder a day, named "yyyy-MM-dd" after the local date, and a file an entry in it, named
/// after the entry's identifier. Whatever else lies there is left alone. All calls block; one thread at a time.
class HistoryFolder {
public:
    /// Larger files are not read: no entry is that long, and a file that is would take the memory of the program.
    static constexpr std::int64_t maximumFileSize = 64 << 20;

    explicit HistoryFolder(std::filesystem::path root) : m_root(std::move(root)) {}

    const std::filesystem::path& root() const { return m_root; }
    std::filesystem::path absolute(const std::string& path) const { return m_root / path; }
    /// Where an entry made now with that date belongs.
    static std::string pathFor(const HistoryEntry& entry);
    /// The day's folder that a relative path names.
    static std::string dayOf(const std::string& path);

    /// The days that have a folder, newest first.
    Result<std::vector<std::string>, FileError> days() const;
    /// The entry files of a day, in no order; none for a day without a folder.
    std::vector<HistoryFile> files(const std::string& day) const;
    /// Where the entry with that identifier is, looked for in every day.
    std::optional<std::string> find(const Uuid& id) const;
    std::optional<FileStamp> stamp(const std::string& path) const;

    /// The error's detail says for people what is wrong with the file.
    Result<HistoryEntry, HistoryError> read(const std::string& path) const;
    /// Replaces the file atomically and flushes it to the disk.
    Result<void, FileError> write(const std::string& path, const HistoryEntry& entry) const;
    /// Removes the file, and its day when that was the last one. A file that is not there is no error.
    Result<void, FileError> remove(const std::string& path) const;
    /// Removes what writes that never came to their end have left in the day's folder.
    void removeLeftovers(const std::string& day) const;

private:
    std::filesystem::path m_root;
};

} // namespace vocalith
