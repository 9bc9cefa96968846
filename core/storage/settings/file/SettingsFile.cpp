#include "core/storage/settings/file/SettingsFile.h"

#include "base/Clock.h"
#include "base/Text.h"
#include "core/storage/FileLock.h"
#include "core/storage/settings/AnySetting.h"
#include "core/storage/settings/file/SettingsMigration.h"
#include "core/storage/settings/file/SettingsText.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <sys/stat.h>

#include <algorithm>
#include <utility>

namespace vocalith {
namespace {

namespace fs = std::filesystem;

fs::path freeNameFor(const fs::path& file, Date now)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(now);
    const auto name = fmt::format("{}.unreadable-{:%Y-%m-%dT%H-%M-%SZ}", file.string(), seconds);
    fs::path free = name;
    std::error_code error;
    for (int number = 2; fs::exists(free, error); ++number)
        free = fmt::format("{}-{}", name, number);
    return free;
}

std::vector<std::string> keysOf(const std::map<std::string, SettingsFile::Change>& changes)
{
    std::vector<std::string> keys;
    keys.reserve(changes.size());
    for (const auto& [key, change] : changes)
        keys.push_back(key);
    return keys;
}

const Json* entryOf(const Json& entries, const std::string& key)
{
    const auto entry = entries.find(key);
    return entry == entries.end() ? nullptr : &*entry;
}

std::string sentenceOf(const fs::path& aside, const std::vector<std::string>& lost)
{
    const auto what = lost.empty() ? std::string() : fmt::format(" Lost: {}.", fmt::join(lost, ", "));
    return fmt::format("The settings file was damaged. What could be read of it still holds.{} The damaged file was "
                       "kept as \"{}\".",
                       what, aside.string());
}

} // namespace

SettingsFile::SettingsFile(fs::path path, const Clock& clock, Logger logger)
    : m_path(std::move(path)), m_clock(clock), m_logger(std::move(logger))
{
    load();
}

void SettingsFile::load()
{
    auto content = read(); // without the lock: the file is whole at any moment, and reading must not make files
    if (!content) {
        m_logger.error("Cannot read settings: " + toString(content.error()));
        m_readError = content.error();
        tell(fmt::format("The settings cannot be read: {}. The defaults hold until they can.",
                         toString(content.error())));
        return;
    }
    m_identity = content->identity;
    m_entries = std::move(content->entries);
    const bool isDamaged = content->isDamaged;
    if (isDamaged)
        m_logger.error("Cannot parse settings: " + m_path.string());
    if (isDamaged || content->isOlder)
        writePending();
    if (isDamaged && m_writeError)
        tell("The settings file is damaged, and it cannot be replaced. What could be read of it holds.");
}

const Json* SettingsFile::find(const std::string& key) const
{
    return entryOf(m_entries, key);
}

void SettingsFile::store(const std::string& key, Change change)
{
    m_pending.insert_or_assign(key, std::move(change));
    if (m_batchDepth == 0)
        writeChanges();
}

void SettingsFile::endBatch()
{
    if (--m_batchDepth == 0 && !m_pending.empty())
        writeChanges();
}

void SettingsFile::refresh()
{
    if (m_batchDepth > 0 || identity() == m_identity)
        return;
    auto content = read();
    // An editor may be in the middle of its work: what is no settings file now is dealt with when it must be written.
    if (content)
        m_identity = content->identity;
    if (!content || content->isAbsent || content->isDamaged) {
        m_logger.warning("Cannot read changed settings: what was known of them holds");
        return;
    }
    m_readError.reset();
    adopt(std::move(content->entries), keysOf(m_pending));
}

void SettingsFile::reportUndecodable(const std::string& key, const std::string& reason) const
{
    m_logger.error(fmt::format("Cannot decode setting: {}: {}", key, reason));
}

void SettingsFile::setListener(Listener listener)
{
    m_listener = std::move(listener);
    for (const auto& sentence : std::exchange(m_untold, {}))
        tell(sentence);
}

void SettingsFile::tell(const std::string& sentence)
{
    if (m_listener)
        m_listener(sentence);
    else
        m_untold.push_back(sentence);
}

std::optional<SettingsFile::Identity> SettingsFile::identity() const
{
    struct stat status {};
    if (::stat(m_path.c_str(), &status) != 0)
        return std::nullopt;
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    return Identity{status.st_dev, status.st_ino, status.st_size,
                    status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec};
}

Result<SettingsFile::Content, FileError> SettingsFile::read() const
{
    Content content;
    content.identity = identity(); // before: a change while it is read is then one that was not seen yet
    auto raw = readWholeFile(m_path);
    if (!raw && raw.error().reason != std::errc::no_such_file_or_directory)
        return failure(raw.error());
    content.raw = std::move(raw).value_or("");
    content.isAbsent = trimmedView(content.raw).empty();
    auto text = readSettingsText(content.raw);
    content.entries = std::move(text.entries);
    content.isDamaged = text.isDamaged;
    content.lost = std::move(text.lost);
    content.isOlder = !content.entries.empty() && migrateSettings(content.entries);
    return content;
}

void SettingsFile::writeChanges()
{
    writePending();
    if (m_writeError == std::exchange(m_toldError, m_writeError) || !m_writeError || m_leavesFailedWrites)
        return;
    tell(fmt::format("The settings cannot be saved: {}. What you change holds until the program ends.",
                     toString(*m_writeError)));
}

void SettingsFile::writePending()
{
    auto entries = update();
    if (!entries) {
        m_writeError = entries.error();
        m_logger.error(
            fmt::format("Cannot store setting: {}: {}", fmt::join(keysOf(m_pending), ", "), toString(*m_writeError)));
        return;
    }
    m_writeError.reset();
    m_readError.reset();
    const auto written = keysOf(std::exchange(m_pending, {}));
    adopt(std::move(*entries), written);
}

Result<Json, FileError> SettingsFile::update()
{
    if (auto folder = createPrivateFolder(m_path.parent_path()); !folder)
        return failure(folder.error());
    const FileLock lock(m_path);
    // Of a write that was killed in the middle: they hold secrets too. Under the lock nobody else is writing one.
    if (lock.isHeld() && !std::exchange(m_leftoversRemoved, true))
        removeLeftovers(m_path);
    auto content = read();
    if (!content)
        return failure(content.error());
    if (content->isDamaged) {
        if (auto kept = keepAside(*content); !kept)
            return failure(kept.error());
    }
    Json entries = content->entries;
    if (content->isDamaged || content->isAbsent) {
        for (const auto& [key, value] : m_entries.items()) {
            if (!entries.contains(key))
                entries[key] = value; // what was known is better than what is gone
        }
    }
    apply(entries);
    if (content->isDamaged || content->isOlder || content->entries != entries) {
        entries = completed(entries);
        if (auto written = writeFileAtomically(m_path, settingsText(entries)); !written)
            return failure(written.error());
    }
    m_identity = identity();
    return entries;
}

Result<void, FileError> SettingsFile::keepAside(const Content& content)
{
    const auto aside = freeNameFor(m_path, m_clock.now());
    if (auto kept = writeFileAtomically(aside, content.raw); !kept)
        return kept;
    std::vector<std::string> lost = content.lost;
    std::erase_if(lost, [this](const auto& key) { return m_entries.contains(key); });
    m_logger.error(fmt::format("Damaged settings kept as {}, {} entries read, lost: {}", aside.string(),
                               content.entries.size(),
                               lost.empty() ? "none" : fmt::format("{}", fmt::join(lost, ", "))));
    tell(sentenceOf(aside, lost));
    return {};
}

void SettingsFile::apply(Json& entries) const
{
    for (const auto& [key, change] : m_pending) {
        if (auto value = change(entryOf(entries, key)))
            entries[key] = std::move(*value);
        else
            entries.erase(key);
    }
}

/// With what every file has, and in the order of the settings.
Json SettingsFile::completed(Json entries) const
{
    for (const auto& [key, value] : m_notes) {
        if (!entries.contains(key))
            entries[key] = value;
    }
    Json ordered = Json::object();
    for (const auto* setting : m_settings) {
        if (const auto* value = entryOf(entries, setting->key()))
            ordered[setting->key()] = *value;
    }
    for (const auto& [key, value] : entries.items()) {
        if (!ordered.contains(key))
            ordered[key] = value;
    }
    return ordered;
}

/// `known` are the keys whose settings hold a value of their own already.
void SettingsFile::adopt(Json entries, const std::vector<std::string>& known)
{
    const Json before = std::exchange(m_entries, std::move(entries));
    const auto isKnown = [&known](const auto& key) {
        return std::find(known.begin(), known.end(), key) != known.end();
    };
    const auto isSame = [&](const auto& key) {
        const auto* old = entryOf(before, key);
        const auto* now = find(key);
        return old && now ? *old == *now : old == now;
    };
    std::vector<AnySetting*> changed;
    for (auto* setting : m_settings) {
        if (!isKnown(setting->key()) && !isSame(setting->key()))
            changed.push_back(setting);
    }
    for (auto* setting : changed)
        setting->reload();
}

} // namespace vocalith
