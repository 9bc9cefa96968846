#pragma once

#include "base/Log.h"
#include "base/Observable.h"
#include "base/Task.h"
#include "core/pipeline/commands/CommandExecutor.h"
#include "core/pipeline/commands/CommandMatcher.h"
#include "core/pipeline/commands/PersistenceManager.h"
#include "models/QuickCommand.h"

#include <optional>
#include <string>
#include <vector>

namespace vocalith {

class Analytics;
class AppLauncher;
class Automations;
class Clock;
class Notices;
class PersistentAppStorage;

/// A command that a transcript said and what became of it.
struct HandledCommand {
    QuickCommandDefinition command;
    std::string phrase; ///< of the command, the one that was said
    std::string report; ///< a sentence or two for people: what was done, or that it failed and why
    bool isDone = false;
    bool operator==(const HandledCommand&) const = default;
};

/// The user's spoken commands: keeps their list, finds the one that a transcript says, and carries it out. Lives as
/// long as the program; main thread.
class QuickCommandsManager {
public:
    struct Services {
        PersistentAppStorage& appStorage;
        Analytics& analyticsManager;
        AppLauncher& appLauncher;
        Automations& shortcutsManager;
        Notices& notices;
        const Clock& clock;
    };

    QuickCommandsManager(const Services& services, const LogService& log);

    /// As stored, also when another process stores them.
    Observable<std::vector<QuickCommandDefinition>> commands;

    /// Deals with a stored list that cannot be read: it is set aside, and the user is told. Whatever else is called
    /// here does that first.
    void load();

    /// Each change is stored at once.
    void add(QuickCommandDefinition command);
    /// Puts it in the place of the one with the same identifier. False when there is none.
    bool update(QuickCommandDefinition command);
    bool remove(const Uuid& id);
    /// Puts each in the place of the one with the same identifier, or else at the end. One change.
    void merge(const std::vector<QuickCommandDefinition>& list);

    /// Carries out the enabled command that the transcript says, and yields it once that has been done or has failed.
    /// Nothing when it says none.
    Task<std::optional<HandledCommand>> handle(std::string transcript);

private:
    void store(std::vector<QuickCommandDefinition> list);

    const Logger m_logger;
    const CommandMatcher m_commandMatcher;
    CommandExecutor m_commandExecutor;
    PersistenceManager m_persistenceManager;
    bool m_isLoaded = false;
    Subscription m_stored;
};

} // namespace vocalith
