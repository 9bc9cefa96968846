#pragma once

#include "core/storage/ProcessLock.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vocalith {

/// The lock of the user's dictations, held while one runs here: one at a time for each user, on the terminal too. Main
/// thread.
class DictationLock {
public:
    explicit DictationLock(std::filesystem::path file) : m_file(std::move(file)) {}

    /// Yields the sentence for the user when another process dictates. Without a lock for any other reason, dictating
    /// is worth more than being alone.
    std::optional<std::string> take()
    {
        auto lock = ProcessLock::take(m_file);
        if (lock)
            m_lock.emplace(std::move(*lock));
        else if (lock.error().isHeld)
            return "A dictation is already running on a terminal (process " + lock.error().detail +
                   "). End or cancel it first.";
        return std::nullopt;
    }
    void release() { m_lock.reset(); }

private:
    const std::filesystem::path m_file;
    std::optional<ProcessLock> m_lock;
};

} // namespace vocalith
