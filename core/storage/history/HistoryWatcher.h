#pragma once

#include "base/Clock.h"
#include "base/Debouncer.h"
#include "base/FolderWatcher.h"

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace vocalith {

/// Notices when files of the history come, go or are replaced, whoever does it. Owned by the history service; main
/// thread.
class HistoryWatcher {
public:
    HistoryWatcher(std::filesystem::path root, Clock& clock);

    /// The days in which something happened, once it has been quiet for a moment; empty when a day itself came or went.
    Signal<std::vector<std::string>> changed;

    /// Watches the root and the newest of these days; older ones, past what a system has watches for, are not.
    void watch(const std::vector<std::string>& daysNewestFirst);

private:
    void note(const std::filesystem::path& folder);

    const std::filesystem::path m_root;
    FolderWatcher m_watcher;
    Debouncer m_quiet;
    std::set<std::string> m_days;
    bool m_rootChanged = false;
    Subscription m_changes;
};

} // namespace vocalith
