#include "core/pipeline/commands/PersistenceManager.h"

#include "base/AtomicFile.h"
#include "base/Clock.h"
#include "base/Json.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "core/storage/settings/file/SettingsFile.h"
#include "ports/Notices.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace vocalith {
namespace {

namespace fs = std::filesystem;

using Commands = std::vector<QuickCommandDefinition>;

constexpr int kIndent = 2;

fs::path freeName(const fs::path& folder, Date now)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(now);
    const auto name = fmt::format("{}.unreadable-{:%Y-%m-%dT%H-%M-%SZ}", PersistenceManager::userDefaultsKey, seconds);
    fs::path free = folder / (name + ".json");
    std::error_code error;
    for (int number = 2; fs::exists(free, error); ++number)
        free = folder / fmt::format("{}-{}.json", name, number);
    return free;
}

} // namespace

bool PersistenceManager::isUnreadable() const
{
    return m_appStorage.isUnreadable(m_appStorage.quickCommands);
}

Commands PersistenceManager::stored() const
{
    return isUnreadable() ? Commands() : m_appStorage.quickCommands.get();
}

Commands PersistenceManager::load()
{
    const auto& setting = m_appStorage.quickCommands;
    if (!m_appStorage.isStored(setting)) {
        m_logger.info("No saved quick commands found, returning empty array");
        return {};
    }
    if (isUnreadable())
        return setAside() ? Commands() : setting.get();
    m_logger.info(fmt::format("Loaded {} quick commands", setting.get().size()));
    return setting.get();
}

void PersistenceManager::save(const Commands& commands)
{
    m_appStorage.quickCommands.set(commands);
    m_logger.info(fmt::format("Saved {} quick commands", commands.size()));
}

bool PersistenceManager::setAside()
{
    const SettingsFile file(m_appStorage.file(), m_clock, m_logger);
    const auto* entry = file.find(userDefaultsKey);
    const auto read = entry ? fromJson<Commands>(*entry) : Commands();
    if (read)
        return false; // another process has stored something else meanwhile, which comes by itself
    auto text = dumpJson(*entry, kIndent);
    if (m_unreadable == text)
        return m_isKept;
    m_logger.error("Failed to decode quick commands: " + toString(read.error()));
    m_isKept = keep(text, toString(read.error()));
    m_unreadable = std::move(text);
    if (!m_isKept)
        return false;
    m_appStorage.quickCommands.reset();
    m_logger.info("Reset quick commands storage");
    return true;
}

bool PersistenceManager::keep(const std::string& text, const std::string& why)
{
    const auto aside = freeName(m_appStorage.file().parent_path(), m_clock.now());
    if (const auto kept = writeFileAtomically(aside, text + '\n'); !kept) {
        m_logger.error("Cannot set quick commands aside: " + toString(kept.error()));
        m_notices.show(fmt::format("Some quick commands cannot be read and do nothing ({}). They stay in the settings, "
                                   "because they could not be set aside: {}.",
                                   why, toString(kept.error())));
        return false;
    }
    m_notices.show(fmt::format("The quick commands cannot be read and were set aside ({}). Mend the file and take them "
                               "back with: vocalith commands import \"{}\"",
                               why, aside.string()));
    return true;
}

} // namespace vocalith
