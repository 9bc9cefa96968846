#include "core/storage/SettingsFile.h"

#include "base/Clock.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace vocalith {
namespace {

namespace fs = std::filesystem;

constexpr int kIndent = 2; // people read the file, and edit it

/// Keeps other processes from writing the settings. Where it cannot be had the write goes on without it: it either
/// fails by itself, or the file system knows no locks and would never let a setting be stored.
class SettingsLock {
public:
    explicit SettingsLock(const fs::path& settingsFile)
        : m_file(::open((settingsFile.string() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR))
    {
        while (m_file >= 0 && ::flock(m_file, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    SettingsLock(const SettingsLock&) = delete;
    SettingsLock& operator=(const SettingsLock&) = delete;
    ~SettingsLock()
    {
        if (m_file >= 0)
            ::close(m_file);
    }

private:
    int m_file;
};

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

} // namespace

SettingsFile::SettingsFile(fs::path path, const Clock& clock, Logger logger)
    : m_path(std::move(path)), m_clock(clock), m_logger(std::move(logger))
{
    load();
}

void SettingsFile::load()
{
    auto entries = read(); // without the lock: the file is whole at any moment, and reading must not make files
    if (entries && !*entries) {
        const SettingsLock lock(m_path);
        entries = read(); // another process may just have mended it
        if (entries && !*entries)
            setAside();
    }
    if (!entries)
        m_logger.error("Cannot read settings: " + toString(entries.error()));
    else if (*entries)
        m_entries = std::move(**entries);
}

const Json* SettingsFile::find(const std::string& key) const
{
    const auto entry = m_entries.find(key);
    return entry == m_entries.end() ? nullptr : &*entry;
}

void SettingsFile::store(const std::string& key, std::optional<Json> value)
{
    m_pending.insert_or_assign(key, std::move(value));
    if (const auto written = writePending(); !written)
        m_logger.error(fmt::format("Cannot store setting: {}: {}", key, toString(written.error())));
}

void SettingsFile::reportUndecodable(const std::string& key, const std::string& reason) const
{
    m_logger.error(fmt::format("Cannot decode setting: {}: {}", key, reason));
}

Result<std::optional<Json>, FileError> SettingsFile::read() const
{
    const auto content = readWholeFile(m_path);
    if (!content && content.error().reason == std::errc::no_such_file_or_directory)
        return Json::object();
    if (!content)
        return failure(content.error());
    auto parsed = parseJson(*content);
    if (!parsed || !parsed->is_object())
        return std::nullopt;
    return std::move(*parsed);
}

void SettingsFile::setAside() const
{
    const auto name = freeNameFor(m_path, m_clock.now());
    std::error_code error;
    fs::rename(m_path, name, error);
    m_logger.error(error ? fmt::format("Cannot set unreadable settings aside: {}: {}", m_path.string(), error.message())
                         : fmt::format("Cannot parse settings: set aside as {}", name.string()));
}

Result<void, FileError> SettingsFile::writePending()
{
    if (auto folder = createPrivateFolder(m_path.parent_path()); !folder)
        return folder;
    const SettingsLock lock(m_path);
    auto stored = read();
    if (!stored)
        return failure(stored.error());
    if (!*stored)
        setAside();
    Json entries = *stored ? **stored : m_entries;
    for (const auto& [key, value] : m_pending) {
        if (value)
            entries[key] = *value;
        else
            entries.erase(key);
    }
    if (!*stored || **stored != entries) {
        if (auto written = writeFileAtomically(m_path, dumpJson(entries, kIndent) + '\n'); !written)
            return written;
    }
    m_entries = std::move(entries);
    m_pending.clear();
    return {};
}

} // namespace vocalith
