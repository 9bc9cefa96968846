#pragma once

#include "base/Log.h"
#include "base/Result.h"
#include "base/Task.h"
#include "models/QuickCommand.h"

#include <string>

namespace vocalith {

class Analytics;
class AppLauncher;
class Automations;

struct CommandExecutionError {
    enum class Kind {
        missingParameter, ///< the command has no address, application or shortcut
        failed,           ///< `detail` says what and why, for people
        cancelled
    };
    Kind kind = Kind::failed;
    std::string detail{};
    bool operator==(const CommandExecutionError&) const = default;
};

/// The sentence that is shown to the user: what is wrong and what to do about it.
std::string userMessage(const CommandExecutionError& error);

/// Does what commands are for. Lives as long as the program; main thread.
class CommandExecutor {
public:
    CommandExecutor(Analytics& analyticsManager, AppLauncher& appLauncher, Automations& shortcutsManager, Logger logger)
        : m_analyticsManager(analyticsManager), m_appLauncher(appLauncher), m_shortcutsManager(shortcutsManager),
          m_logger(std::move(logger))
    {}

    /// Yields what was done, to follow a colon: "opened https://example.org". Both ends are counted. A stop ends the
    /// wait, not what was started.
    Task<Result<std::string, CommandExecutionError>> execute(QuickCommandDefinition command);

private:
    using Outcome = Result<std::string, CommandExecutionError>;

    Task<Outcome> carryOut(QuickCommandAction action);
    Task<Outcome> openURL(std::string url);
    Task<Outcome> launchApp(std::string bundleID);
    Task<Outcome> runShortcut(std::string name);

    Analytics& m_analyticsManager;
    AppLauncher& m_appLauncher;
    Automations& m_shortcutsManager;
    const Logger m_logger;
};

} // namespace vocalith
