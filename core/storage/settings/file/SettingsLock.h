#pragma once

#include <filesystem>

namespace vocalith {

/// Keeps other processes from writing the settings for as long as it lives; blocks while another has it. Where it
/// cannot be had the write goes on without it: it either fails by itself, or the file system knows no locks and would
/// never let a setting be stored.
class SettingsLock {
public:
    explicit SettingsLock(const std::filesystem::path& settingsFile);
    SettingsLock(const SettingsLock&) = delete;
    SettingsLock& operator=(const SettingsLock&) = delete;
    ~SettingsLock();

    bool isHeld() const { return m_isHeld; }

private:
    int m_file;
    bool m_isHeld = false;
};

} // namespace vocalith
