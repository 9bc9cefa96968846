#pragma once

#include "base/Result.h"

#include <filesystem>
#include <memory>
#include <string>

namespace vocalith {

/// Something that only one process of the user may do at a time. Held until it is destroyed or the process ends,
/// however it ends.
class ProcessLock {
public:
    struct Error {
        bool isHeld = false; ///< by another process
        std::string detail;  ///< the holder's process id, or the system's reason
    };

    /// Takes the lock that `file` stands for, making the file and its folder.
    static Result<ProcessLock, Error> take(const std::filesystem::path& file);

    ProcessLock(ProcessLock&& other) noexcept;
    ProcessLock& operator=(ProcessLock&& other) noexcept;
    ~ProcessLock();

private:
    explicit ProcessLock(int descriptor) : m_descriptor(descriptor) {}
    int m_descriptor;
};

} // namespace vocalith
