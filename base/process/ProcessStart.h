#pragma once

#include <string>
#include <vector>

#include <spawn.h>

namespace vocalith {

/// How a program is begun (posix_spawn(3)): as the leader of a session of its own, so without this program's terminal,
/// with the signals as a shell gives them. Main thread.
class ProcessStart {
public:
    ProcessStart();
    ProcessStart(const ProcessStart&) = delete;
    ProcessStart& operator=(const ProcessStart&) = delete;
    ~ProcessStart();

    /// Makes an open file one of its standard streams.
    void connect(int file, int stream);
    /// The same with a file that is opened there. `flags` are those of open(2).
    void open(const char* path, int flags, int stream);
    /// Nothing but the standard streams is handed on.
    void closeTheRest();
    void workIn(const char* folder);

    /// Starts `words[0]`, which is looked up in PATH unless it has a slash; an executable text that does not say what
    /// reads it is read by /bin/sh, as a shell would have it. Yields the error number, or 0.
    int spawn(pid_t& id, const std::vector<std::string>& words) const;

private:
    posix_spawn_file_actions_t m_files{};
    posix_spawnattr_t m_attributes{};
};

} // namespace vocalith
