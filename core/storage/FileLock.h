#pragma once

#include <filesystem>

namespace vocalith {

/// Keeps other processes from changing a file for as long as it lives, where they ask for the same lock; blocks while
/// another has it. The lock itself is a file beside that one. Where it cannot be had the work goes on without it: it
/// either fails by itself, or the file system knows no locks and would never let anything be stored.
class FileLock {
public:
    explicit FileLock(const std::filesystem::path& file);
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock();

    bool isHeld() const { return m_isHeld; }

private:
    int m_file;
    bool m_isHeld = false;
};

} // namespace vocalith
