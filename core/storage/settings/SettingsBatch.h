#pragma once

namespace vocalith {

class SettingsFile;

/// While it lives, what is set is only collected; its end stores all of it in one write. The values hold, and are told,
/// at once. Main thread; never held across an await.
class [[nodiscard]] SettingsBatch {
public:
    explicit SettingsBatch(SettingsFile& file);
    SettingsBatch(const SettingsBatch&) = delete;
    SettingsBatch& operator=(const SettingsBatch&) = delete;
    ~SettingsBatch();

private:
    SettingsFile& m_file;
};

} // namespace vocalith
