#include "core/storage/settings/file/SettingsWatch.h"

#include "core/storage/settings/file/SettingsFile.h"

namespace vocalith {

SettingsWatch::SettingsWatch(SettingsFile& file)
    : m_file(file), m_folder(file.path().parent_path()),
      m_subscription(m_watcher.changed.subscribe([this](const std::filesystem::path&) {
          follow();
          followLink();
          m_file.refresh();
      }))
{
    follow();
    followLink();
}

void SettingsWatch::follow()
{
    if (m_watcher.isWatching(m_folder))
        return;
    for (auto folder = m_folder;; folder = folder.parent_path()) {
        if (m_watcher.watch(folder)) {
            if (m_watched != folder)
                m_watcher.unwatch(std::exchange(m_watched, folder));
            return;
        }
        if (!folder.has_relative_path())
            return; // nothing can be watched here: changes are then seen with the next write
    }
}

/// Editors write what the link leads to, and nothing then happens beside the link.
void SettingsWatch::followLink()
{
    namespace fs = std::filesystem;
    std::error_code error;
    if (!fs::is_symlink(m_file.path(), error))
        return;
    const auto folder = fs::canonical(m_file.path(), error).parent_path();
    if (!error && !m_watcher.isWatching(folder) && !fs::equivalent(folder, m_folder, error))
        m_watcher.watch(folder);
}

} // namespace vocalith
