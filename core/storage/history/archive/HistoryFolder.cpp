#include "core/storage/history/archive/HistoryFolder.h"

#include "base/Json.h"

#include <fmt/format.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <ctime>
#include <functional>
#include <memory>

namespace vocalith {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kExtension = ".json";
constexpr int kIndent = 2; // people look into their history, and keep it under version control
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t kLeftoverAge = 24 * 60 * 60; // seconds; a younger one may still be being written

using Directory = std::unique_ptr<DIR, int (*)(DIR*)>;

Directory open(const fs::path& folder)
{
    return {::opendir(folder.c_str()), &::closedir};
}

FileError systemError(const fs::path& path)
{
    return {path, std::error_code(errno, std::generic_category())};
}

FileStamp stampOf(const struct stat& status)
{
    return {status.st_mtim.tv_sec * kNanosecondsPerSecond + status.st_mtim.tv_nsec, status.st_size};
}

/// "2026-02-31" is none.
bool isDay(std::string_view name)
{
    constexpr std::string_view kForm = "yyyy-MM-dd";
    if (name.size() != kForm.size() || name[4] != '-' || name[7] != '-')
        return false;
    const auto number = [name](std::size_t from, std::size_t length) {
        int value = -1;
        const auto* end = name.data() + from + length;
        const auto parsed = std::from_chars(name.data() + from, end, value);
        return parsed.ec == std::errc() && parsed.ptr == end ? value : -1;
    };
    const int month = number(5, 2);
    const int day = number(8, 2);
    return month > 0 && day > 0 &&
           std::chrono::year_month_day(std::chrono::year(number(0, 4)),
                                       std::chrono::month(static_cast<unsigned>(month)),
                                       std::chrono::day(static_cast<unsigned>(day)))
               .ok();
}

bool isEntryFile(std::string_view name)
{
    return name.size() > kExtension.size() && name.ends_with(kExtension) && name.front() != '.';
}

bool isLeftover(std::string_view name)
{
    const auto of = unfinishedWriteOf(name);
    return of && isEntryFile(*of) && Uuid::parse(of->substr(0, of->size() - kExtension.size()));
}

/// Calls `visit` with the name of everything in the folder. False when the folder cannot be read.
bool visitNames(const Directory& folder, const std::function<void(std::string_view)>& visit)
{
    if (!folder)
        return false;
    while (const dirent* found = ::readdir(folder.get())) // NOLINT(concurrency-mt-unsafe): each has its own stream
        visit(found->d_name);
    return true;
}

Failure<HistoryError> unreadable(std::string reason)
{
    return failure(HistoryError{HistoryError::Kind::unreadable, std::move(reason)});
}

} // namespace

std::string HistoryFolder::pathFor(const HistoryEntry& entry)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(entry.creationDate);
    const std::time_t time = seconds.time_since_epoch().count();
    std::tm local{};
    ::localtime_r(&time, &local);
    // A year of more than four digits, from a clock gone wild, must still name a day.
    const int year = std::clamp(local.tm_year + 1900, 0, 9999);
    return fmt::format("{:04}-{:02}-{:02}/{}.json", year, local.tm_mon + 1, local.tm_mday, entry.id.toString());
}

std::string HistoryFolder::dayOf(const std::string& path)
{
    return path.substr(0, path.find('/'));
}

Result<std::vector<std::string>, FileError> HistoryFolder::days() const
{
    std::vector<std::string> found;
    const auto keep = [&found](std::string_view name) {
        if (isDay(name))
            found.emplace_back(name);
    };
    if (!visitNames(open(m_root), keep))
        return failure(systemError(m_root));
    std::sort(found.begin(), found.end(), std::greater<>());
    return found;
}

std::vector<HistoryFile> HistoryFolder::files(const std::string& day) const
{
    std::vector<HistoryFile> found;
    const auto folder = open(m_root / day);
    visitNames(folder, [&](std::string_view name) {
        struct stat status {};
        if (isEntryFile(name) && ::fstatat(::dirfd(folder.get()), name.data(), &status, 0) == 0 &&
            S_ISREG(status.st_mode))
            found.push_back({fmt::format("{}/{}", day, name), stampOf(status)});
    });
    return found;
}

std::optional<std::string> HistoryFolder::find(const Uuid& id) const
{
    const auto all = days();
    if (!all)
        return std::nullopt;
    for (const auto& day : *all) {
        auto path = fmt::format("{}/{}.json", day, id.toString());
        if (::access(absolute(path).c_str(), F_OK) == 0)
            return path;
    }
    return std::nullopt;
}

std::optional<FileStamp> HistoryFolder::stamp(const std::string& path) const
{
    struct stat status {};
    if (::stat(absolute(path).c_str(), &status) != 0)
        return std::nullopt;
    return stampOf(status);
}

Result<HistoryEntry, HistoryError> HistoryFolder::read(const std::string& path) const
{
    const auto known = stamp(path);
    if (!known)
        return failure(HistoryError{HistoryError::Kind::notFound, toString(systemError(absolute(path)))});
    if (known->size > maximumFileSize)
        return unreadable(fmt::format("it is larger than {} MB", maximumFileSize >> 20));
    const auto content = readWholeFile(absolute(path));
    if (!content)
        return failure(HistoryError{HistoryError::Kind::file, toString(content.error())});
    auto entry = parseJson(*content).and_then([](const Json& json) { return fromJson<HistoryEntry>(json); });
    if (!entry)
        return unreadable(content->empty() ? "it is empty" : toString(entry.error()));
    if (Uuid::parse(fs::path(path).stem().string()) != entry->id)
        return unreadable("it is not named after its entry, which is " + entry->id.toString());
    return std::move(*entry);
}

Result<void, FileError> HistoryFolder::write(const std::string& path, const HistoryEntry& entry) const
{
    const std::string content = dumpJson(toJson(entry), kIndent) + '\n';
    auto written = writeFileAtomically(absolute(path), content);
    // Another process may have removed the day's folder, then empty, in that moment.
    if (!written && written.error().reason == std::errc::no_such_file_or_directory)
        written = writeFileAtomically(absolute(path), content);
    return written;
}

Result<void, FileError> HistoryFolder::remove(const std::string& path) const
{
    if (::unlink(absolute(path).c_str()) != 0 && errno != ENOENT)
        return failure(systemError(absolute(path)));
    ::rmdir((m_root / dayOf(path)).c_str()); // refused unless it is empty
    return {};
}

void HistoryFolder::removeLeftovers(const std::string& day) const
{
    const auto folder = open(m_root / day);
    const auto now = std::time(nullptr);
    visitNames(folder, [&](std::string_view name) {
        struct stat status {};
        if (isLeftover(name) && ::fstatat(::dirfd(folder.get()), name.data(), &status, 0) == 0 &&
            now - status.st_mtim.tv_sec > kLeftoverAge)
            ::unlinkat(::dirfd(folder.get()), name.data(), 0);
    });
}

} // namespace vocalith
