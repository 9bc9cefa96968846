#pragma once

#include "base/AtomicFile.h"
#include "base/Json.h"
#include "base/Log.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace vocalith {

class Clock;

/// The JSON object in which the settings are kept, entry by entry. Owned by `PersistentAppStorage`; main thread. Other
/// processes may change the file meanwhile: a write takes the lock beside it, reads it again and changes its own entry
/// only, so that neither their entries nor those that this version does not know are lost.
class SettingsFile {
public:
    /// Reads the file. One that holds no JSON object is set aside under a name with the date.
    SettingsFile(std::filesystem::path path, const Clock& clock, Logger logger);

    /// The entry as it was last read or written, or nullptr.
    const Json* find(const std::string& key) const;
    /// Writes the entry, or removes it. What cannot be written is logged and tried again with the next entry.
    void store(const std::string& key, std::optional<Json> value);
    /// Logs an entry that is there but cannot be used.
    void reportUndecodable(const std::string& key, const std::string& reason) const;

private:
    void load();
    /// Nothing when the file holds no JSON object; an empty object when there is no file.
    Result<std::optional<Json>, FileError> read() const;
    void setAside() const;
    Result<void, FileError> writePending();

    std::filesystem::path m_path;
    const Clock& m_clock;
    Logger m_logger;
    Json m_entries = Json::object();
    std::map<std::string, std::optional<Json>> m_pending;
};

} // namespace vocalith
