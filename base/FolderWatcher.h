#pragma once

#include "base/Observable.h"

#include <filesystem>
#include <memory>

namespace vocalith {

/// Tells which folders gained, lost, replaced or rewrote a file: their names, not what happened in them. A folder that
/// goes away is told once more and then forgotten. Folders inside a watched one are not looked into. Main thread, from
/// its event loop; without a QCoreApplication nothing can be watched. An observer must not destroy the watcher.
class FolderWatcher {
public:
    FolderWatcher();
    FolderWatcher(const FolderWatcher&) = delete;
    FolderWatcher& operator=(const FolderWatcher&) = delete;
    ~FolderWatcher();

    Signal<std::filesystem::path> changed;

    /// Whether the folder is watched from now on: not one that does not exist, and not when the system has no more
    /// watches. A folder under two names counts as the one that was given last.
    bool watch(const std::filesystem::path& folder);
    void unwatch(const std::filesystem::path& folder);
    bool isWatching(const std::filesystem::path& folder) const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace vocalith
