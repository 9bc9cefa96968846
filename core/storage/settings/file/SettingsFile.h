#pragma once

#include "base/AtomicFile.h"
#include "base/Json.h"
#include "base/Log.h"

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

class AnySetting;
class Clock;

/// The JSON object in which the settings are kept, entry by entry. Owned by `PersistentAppStorage`; main thread. Other
/// processes may change the file meanwhile: a write takes the lock beside it, reads it again and changes its own
/// entries only, so that neither theirs nor those that this version does not know are lost.
class SettingsFile {
public:
    /// The entry to write in place of the one that is stored, or nothing to remove it.
    using Change = std::function<std::optional<Json>(const Json* stored)>;
    using Listener = std::function<void(const std::string& sentence)>;

    /// Reads the file. One that is damaged is kept aside under a name with the date and written anew with what could be
    /// read of it; one of an older layout is brought up to date.
    SettingsFile(std::filesystem::path path, const Clock& clock, Logger logger);

    const std::filesystem::path& path() const { return m_path; }
    /// The entry as it was last read or written, or nullptr.
    const Json* find(const std::string& key) const;
    /// Every entry as it was last read or written.
    const Json& entries() const { return m_entries; }

    /// Has the setting reloaded whenever its entry was changed by another process. It outlives this, and its place
    /// among the others decides where in the file it stands.
    void add(AnySetting& setting) { m_settings.push_back(&setting); }
    const std::vector<AnySetting*>& settings() const { return m_settings; }
    /// An entry that the first write of the file adds.
    void noteWithFirstWrite(const std::string& key, Json value) { m_notes.emplace_back(key, std::move(value)); }

    /// Changes the entry. What cannot be written is logged and tried again with the next entry.
    void store(const std::string& key, Change change);
    /// Between the two, changes are only collected; the last end writes them.
    void beginBatch() { ++m_batchDepth; }
    void endBatch();
    /// Why the last write failed, until one succeeds.
    const std::optional<FileError>& writeError() const { return m_writeError; }
    /// Why the file could not be read, until it can be.
    const std::optional<FileError>& readError() const { return m_readError; }
    /// From now on the listener is not told of them: whoever sets something asks `writeError`.
    void leaveFailedWrites() { m_leavesFailedWrites = true; }

    /// Reads the file again if another process changed it.
    void refresh();

    /// Logs an entry that is there but cannot be used.
    void reportUndecodable(const std::string& key, const std::string& reason) const;
    /// Who tells the user what went wrong with the file: what did so far, and whatever will.
    void setListener(Listener listener);

private:
    struct Identity {
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = 0;
        std::int64_t modified = 0; ///< nanoseconds
        bool operator==(const Identity&) const = default;
    };
    // NOLINTNEXTLINE(bugprone-exception-escape): moving JSON throws nothing, whatever the check makes of its library
    struct Content {
        bool isAbsent = false; ///< there is no file, or nothing in it
        std::string raw;
        Json entries; ///< in the current layout
        bool isDamaged = false;
        bool isOlder = false; ///< the file has an older layout
        std::vector<std::string> lost;
        std::optional<Identity> identity;
    };

    std::optional<Identity> identity() const;
    Result<Content, FileError> read() const;
    void load();
    void writeChanges();
    void writePending();
    Result<Json, FileError> update();
    Result<void, FileError> keepAside(const Content& content);
    void apply(Json& entries) const;
    Json completed(Json entries) const;
    void adopt(Json entries, const std::vector<std::string>& known);
    void tell(const std::string& sentence);

    const std::filesystem::path m_path;
    const Clock& m_clock;
    Logger m_logger;
    Json m_entries = Json::object();
    std::optional<Identity> m_identity; ///< of the file that `m_entries` came from
    std::map<std::string, Change> m_pending;
    int m_batchDepth = 0;
    bool m_leftoversRemoved = false;
    std::vector<std::pair<std::string, Json>> m_notes;
    std::vector<AnySetting*> m_settings;
    std::optional<FileError> m_readError;
    std::optional<FileError> m_writeError;
    std::optional<FileError> m_toldError;
    bool m_leavesFailedWrites = false;
    Listener m_listener;
    std::vector<std::string> m_untold;
};

} // namespace vocalith
