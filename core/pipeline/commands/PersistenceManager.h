#pragma once

#include "base/Log.h"
#include "models/QuickCommand.h"

#include <optional>
#include <string>
#include <vector>

namespace vocalith {

class Clock;
class Notices;
class PersistentAppStorage;

/// Keeps the list of quick commands in the settings. The list counts as one: where an element cannot be read, all of it
/// is set aside. Lives as long as the program; main thread.
class PersistenceManager {
public:
    static constexpr const char* userDefaultsKey = "quickCommands";

    PersistenceManager(PersistentAppStorage& appStorage, Notices& notices, const Clock& clock, Logger logger)
        : m_appStorage(appStorage), m_notices(notices), m_clock(clock), m_logger(std::move(logger))
    {}

    /// Whether there is a list that cannot be read.
    bool isUnreadable() const;
    /// The list as it is stored; empty where it cannot be read.
    std::vector<QuickCommandDefinition> stored() const;

    /// The list as it is stored. One that cannot be read is moved to a file beside the settings, of which the user is
    /// told; where that fails, what can be read of it holds and all of it stays where it is.
    std::vector<QuickCommandDefinition> load();
    /// Stores the list at once, in place of the one that is there.
    void save(const std::vector<QuickCommandDefinition>& commands);

private:
    bool setAside();
    bool keep(const std::string& text, const std::string& why);

    PersistentAppStorage& m_appStorage;
    Notices& m_notices;
    const Clock& m_clock;
    const Logger m_logger;
    /// The entry that could not be read and what became of it, so that a settings file that cannot be written gives one
    /// copy and one notice.
    std::optional<std::string> m_unreadable;
    bool m_isKept = false;
};

} // namespace vocalith
