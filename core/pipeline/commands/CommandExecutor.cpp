#include "core/pipeline/commands/CommandExecutor.h"

#include "base/Json.h"
#include "base/Text.h"
#include "base/Url.h"
#include "ports/Analytics.h"
#include "ports/AppLauncher.h"
#include "ports/Automations.h"

#include <fmt/format.h>

namespace vocalith {
namespace {

using Kind = CommandExecutionError::Kind;
namespace action = quick_command_action;

constexpr const char* kShortcutAddress = "shortcuts://run-shortcut?name=";

/// The URL, the identifier or the name.
const std::string& parameter(const QuickCommandAction& action)
{
    if (const auto* open = std::get_if<action::OpenURL>(&action))
        return open->url;
    if (const auto* launch = std::get_if<action::LaunchApp>(&action))
        return launch->bundleID;
    return std::get<action::RunShortcut>(action).name;
}

CommandExecutionError launchError(const std::string& what, const AppLaunchError& error)
{
    if (error.kind == AppLaunchError::Kind::cancelled)
        return {Kind::cancelled};
    return {Kind::failed, fmt::format("{}: {}", what, userMessage(error))};
}

} // namespace

std::string userMessage(const CommandExecutionError& error)
{
    switch (error.kind) {
    case Kind::missingParameter:
        return "Missing command parameter. Say what it is to do, with \"vocalith commands edit\".";
    case Kind::failed: return error.detail;
    case Kind::cancelled: return "Cancelled";
    }
    return {};
}

Task<CommandExecutor::Outcome> CommandExecutor::execute(QuickCommandDefinition command)
{
    m_logger.info("Executing command: " + dumpJson(toJson(command)));
    auto outcome = co_await carryOut(command.action);
    if (outcome)
        m_analyticsManager.event("quick_command_executed");
    else if (outcome.error().kind != Kind::cancelled)
        m_analyticsManager.event("quick_command_execution_failed");
    co_return outcome;
}

Task<CommandExecutor::Outcome> CommandExecutor::carryOut(QuickCommandAction action)
{
    if (trimmedView(parameter(action)).empty()) {
        m_logger.error("Missing command parameter");
        co_return failure(CommandExecutionError{Kind::missingParameter});
    }
    if (std::holds_alternative<action::OpenURL>(action))
        co_return co_await openURL(parameter(action));
    if (std::holds_alternative<action::LaunchApp>(action))
        co_return co_await launchApp(parameter(action));
    co_return co_await runShortcut(parameter(action));
}

Task<CommandExecutor::Outcome> CommandExecutor::openURL(std::string url)
{
    const auto opened = co_await m_appLauncher.openURL(url);
    if (opened)
        co_return "opened " + url;
    auto error = launchError(url + " could not be opened", opened.error());
    if (error.kind != Kind::cancelled)
        m_logger.error("Failed to open URL: " + url);
    co_return failure(std::move(error));
}

Task<CommandExecutor::Outcome> CommandExecutor::launchApp(std::string bundleID)
{
    const auto launched = co_await m_appLauncher.launchApp(bundleID);
    if (launched)
        co_return "started " + bundleID;
    auto error = launchError("The application " + bundleID + " could not be started", launched.error());
    if (error.kind != Kind::cancelled)
        m_logger.error(fmt::format("Failed to launch app {}: {}", bundleID, userMessage(launched.error())));
    co_return failure(std::move(error));
}

Task<CommandExecutor::Outcome> CommandExecutor::runShortcut(std::string name)
{
    m_logger.info("Running shortcut: " + name);
    const auto done = fmt::format("ran the shortcut \"{}\"", name);
    const auto ran = co_await m_shortcutsManager.run(name);
    if (ran)
        co_return done;
    if (ran.error().kind == AutomationError::Kind::cancelled)
        co_return failure(CommandExecutionError{Kind::cancelled});
    m_logger.error(fmt::format("Shortcut '{}': {}", name, userMessage(ran.error())));
    const auto opened = co_await m_appLauncher.openURL(kShortcutAddress + percentEncoded(name));
    if (opened)
        co_return done;
    if (opened.error().kind == AppLaunchError::Kind::cancelled)
        co_return failure(CommandExecutionError{Kind::cancelled});
    m_logger.error(fmt::format("Failed to run shortcut '{}' using URL scheme", name));
    // Nobody need have heard of that address: what went wrong with the shortcut itself is what can be mended.
    co_return failure(CommandExecutionError{Kind::failed, userMessage(ran.error())});
}

} // namespace vocalith
