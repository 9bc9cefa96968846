#include "core/pipeline/commands/QuickCommandsManager.h"

#include "core/storage/settings/PersistentAppStorage.h"

#include <fmt/format.h>

#include <algorithm>

namespace vocalith {
namespace {

using Commands = std::vector<QuickCommandDefinition>;

Commands::iterator find(Commands& list, const Uuid& id)
{
    return std::ranges::find(list, id, &QuickCommandDefinition::id);
}

} // namespace

QuickCommandsManager::QuickCommandsManager(const Services& services, const LogService& log)
    : m_logger(log.logger("quickCommands")),
      m_commandExecutor(services.analyticsManager, services.appLauncher, services.shortcutsManager,
                        log.logger("CommandExecutor")),
      m_persistenceManager(services.appStorage, services.notices, services.clock, m_logger)
{
    commands.set(m_persistenceManager.stored());
    m_stored = services.appStorage.quickCommands.subscribe(
        [this](const auto&) { commands.set(m_persistenceManager.stored()); });
}

/// A list that cannot be read is dealt with when somebody wants it, not by every command that happens to be run.
void QuickCommandsManager::load()
{
    if (!std::exchange(m_isLoaded, true) || m_persistenceManager.isUnreadable())
        commands.set(m_persistenceManager.load());
}

void QuickCommandsManager::store(Commands list)
{
    m_persistenceManager.save(list);
    commands.set(std::move(list));
}

void QuickCommandsManager::add(QuickCommandDefinition command)
{
    load();
    auto list = commands.get();
    list.push_back(std::move(command));
    store(std::move(list));
}

bool QuickCommandsManager::update(QuickCommandDefinition command)
{
    load();
    auto list = commands.get();
    const auto place = find(list, command.id);
    if (place == list.end())
        return false;
    *place = std::move(command);
    store(std::move(list));
    return true;
}

bool QuickCommandsManager::remove(const Uuid& id)
{
    load();
    auto list = commands.get();
    const auto place = find(list, id);
    if (place == list.end())
        return false;
    list.erase(place);
    store(std::move(list));
    return true;
}

void QuickCommandsManager::merge(const Commands& list)
{
    load();
    auto all = commands.get();
    for (const auto& command : list) {
        const auto place = find(all, command.id);
        if (place == all.end())
            all.push_back(command);
        else
            *place = command;
    }
    store(std::move(all));
}

Task<std::optional<HandledCommand>> QuickCommandsManager::handle(std::string transcript)
{
    load();
    const auto match = m_commandMatcher.match(transcript, commands.get());
    if (!match)
        co_return std::nullopt;
    m_logger.info(fmt::format("Matched \"{}\" at distance {}", match->phrase, match->distance));
    const auto done = co_await m_commandExecutor.execute(match->command);
    HandledCommand handled{match->command, match->phrase, {}, done.has_value()};
    if (done) {
        handled.report = fmt::format("Ran the quick command \"{}\": {}", match->phrase, *done);
    } else if (done.error().kind == CommandExecutionError::Kind::cancelled) {
        handled.report = fmt::format("The quick command \"{}\" was cancelled.", match->phrase);
    } else {
        handled.report = fmt::format("The quick command \"{}\" failed. {}", match->phrase, userMessage(done.error()));
    }
    co_return handled;
}

} // namespace vocalith
