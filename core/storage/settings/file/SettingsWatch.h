#pragma once

#include "base/FolderWatcher.h"

#include <filesystem>

namespace vocalith {

class SettingsFile;

/// Has the settings file read again when another process changed it, also when its folder is not there yet, or the file
/// is a link to one in another folder. Owned by `PersistentAppStorage`; main thread.
class SettingsWatch {
public:
    explicit SettingsWatch(SettingsFile& file);

private:
    void follow();
    void followLink();

    SettingsFile& m_file;
    const std::filesystem::path m_folder;
    FolderWatcher m_watcher;
    std::filesystem::path m_watched; ///< the folder, or the nearest one above it that there is
    Subscription m_subscription;
};

} // namespace vocalith
