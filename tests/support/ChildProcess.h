#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vocalith::test {

/// A child process with exactly the given environment; it is killed, by its id, when this is destroyed.
class ChildProcess {
public:
    ChildProcess() = default;
    ChildProcess(std::vector<std::string> command, std::vector<std::string> environment,
                 const std::filesystem::path& output);
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ~ChildProcess();

    pid_t id() const { return m_id; } ///< 0 when there is none
    void signal(int number) const;
    int wait(); ///< until it has ended; yields its exit status, or -1
    /// The same without waiting: nothing while it runs.
    std::optional<int> ended();
    void kill();

private:
    pid_t m_id = 0;
};

/// The environment with these variables ("NAME=value") instead of its own of that name.
std::vector<std::string> changed(std::vector<std::string> environment, const std::vector<std::string>& assignments);

} // namespace vocalith::test
