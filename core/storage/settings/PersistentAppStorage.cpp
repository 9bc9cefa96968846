#include "core/storage/settings/PersistentAppStorage.h"

#include "base/Clock.h"
#include "core/storage/settings/Setting_p.h"
#include "core/storage/settings/file/SettingsFile.h"
#include "core/storage/settings/file/SettingsMigration.h"
#include "core/storage/settings/file/SettingsWatch.h"
#include "ports/Notices.h"

#include <algorithm>
#include <thread>

namespace vocalith {
namespace {

std::optional<std::string> textOf(const std::optional<FileError>& error)
{
    return error ? std::optional(toString(*error)) : std::nullopt;
}

} // namespace

PersistentAppStorage::PersistentAppStorage(std::filesystem::path settingsFile, const Clock& clock, Logger logger,
                                           std::string locale)
    : m_clock(clock), m_locale(std::move(locale)),
      m_file(std::make_unique<SettingsFile>(std::move(settingsFile), clock, std::move(logger)))
{
    m_file->noteWithFirstWrite(settingsVersion.key(), kSettingsVersion);
    m_file->noteWithFirstWrite(installDate.key(), installDate.defaultJson());
    m_watch = std::make_unique<SettingsWatch>(*m_file);
}

PersistentAppStorage::~PersistentAppStorage() = default;

const std::filesystem::path& PersistentAppStorage::file() const
{
    return m_file->path();
}

const std::vector<AnySetting*>& PersistentAppStorage::settings() const
{
    return m_file->settings();
}

AnySetting* PersistentAppStorage::find(const std::string& key) const
{
    const auto& all = settings();
    const auto found =
        std::find_if(all.begin(), all.end(), [&key](const auto* setting) { return setting->key() == key; });
    return found == all.end() ? nullptr : *found;
}

bool PersistentAppStorage::isStored(const AnySetting& setting) const
{
    return m_file->find(setting.key());
}

bool PersistentAppStorage::isUnreadable(const AnySetting& setting) const
{
    const auto* entry = m_file->find(setting.key());
    return entry && !setting.check(*entry);
}

Json PersistentAppStorage::unknownEntries() const
{
    Json unknown = Json::object();
    for (const auto& [key, value] : m_file->entries().items()) {
        if (!find(key))
            unknown[key] = value;
    }
    return unknown;
}

void PersistentAppStorage::storeUnknownEntry(const std::string& key, Json value)
{
    m_file->store(key, [value = std::move(value)](const Json*) { return value; });
}

std::optional<std::string> PersistentAppStorage::whyNotStored() const
{
    return textOf(m_file->writeError());
}

std::optional<std::string> PersistentAppStorage::whyNotRead() const
{
    return textOf(m_file->readError());
}

void PersistentAppStorage::showProblems(Notices& notices)
{
    m_file->setListener([&notices](const std::string& sentence) { notices.show(sentence); });
}

void PersistentAppStorage::leaveFailedWrites()
{
    m_file->leaveFailedWrites();
}

int PersistentAppStorage::defaultWhisperThreads()
{
    constexpr int kEnough = 4; // more hardly speed a decode up
    return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, kEnough);
}

Date PersistentAppStorage::now() const
{
    return m_clock.now();
}

} // namespace vocalith
