#include "core/storage/history/HistoryWatcher.h"

#include <algorithm>
#include <utility>

namespace vocalith {
namespace {

constexpr std::chrono::milliseconds kQuiet(200);
constexpr std::size_t kWatchedDays = 400;

} // namespace

HistoryWatcher::HistoryWatcher(std::filesystem::path root, Clock& clock)
    : m_root(std::move(root)), m_quiet(clock, kQuiet)
{
    m_changes = m_watcher.changed.subscribe([this](const std::filesystem::path& folder) { note(folder); });
}

void HistoryWatcher::watch(const std::vector<std::string>& daysNewestFirst)
{
    static_cast<void>(m_watcher.watch(m_root)); // without a watch, changes are seen at the next start
    const auto count = std::min(daysNewestFirst.size(), kWatchedDays);
    for (std::size_t i = 0; i < count; ++i) {
        const auto day = m_root / daysNewestFirst[i];
        if (!m_watcher.isWatching(day))
            static_cast<void>(m_watcher.watch(day));
    }
}

void HistoryWatcher::note(const std::filesystem::path& folder)
{
    if (folder == m_root)
        m_rootChanged = true;
    else
        m_days.insert(folder.filename());
    m_quiet([this] {
        auto days = std::exchange(m_days, {});
        if (std::exchange(m_rootChanged, false))
            days.clear();
        changed.emit({days.begin(), days.end()});
    });
}

} // namespace vocalith
