#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <utility>

namespace vocalith::test {

namespace fs = std::filesystem;

namespace {

std::vector<char*> pointersTo(std::vector<std::string>& strings)
{
    std::vector<char*> pointers(strings.size() + 1); // a null pointer ends it
    std::ranges::transform(strings, pointers.begin(), [](std::string& string) { return string.data(); });
    return pointers;
}

} // namespace

std::vector<std::string> changed(std::vector<std::string> environment, const std::vector<std::string>& assignments)
{
    for (const auto& assignment : assignments) {
        const auto name = assignment.substr(0, assignment.find('=') + 1);
        std::erase_if(environment, [&](const auto& variable) { return variable.starts_with(name); });
        environment.push_back(assignment);
    }
    return environment;
}

ChildProcess::ChildProcess(std::vector<std::string> command, std::vector<std::string> environment,
                           const fs::path& output)
{
    // Should the test program be killed, its children go with it.
    command.insert(command.begin(), {"setpriv", "--pdeathsig", "KILL"});
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, (output.string() + ".err").c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int error = posix_spawnp(&m_id, command[0].c_str(), &files, nullptr, pointersTo(command).data(),
                                   pointersTo(environment).data());
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        m_id = 0;
        ADD_FAILURE() << command[0] << " cannot be started";
    }
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept : m_id(std::exchange(other.m_id, 0))
{}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept
{
    std::swap(m_id, other.m_id);
    return *this;
}

ChildProcess::~ChildProcess()
{
    kill();
}

void ChildProcess::signal(int number) const
{
    if (m_id > 0)
        ::kill(m_id, number);
}

int ChildProcess::wait()
{
    int status = -1;
    if (const auto id = std::exchange(m_id, 0); id > 0)
        waitpid(id, &status, 0);
    return status;
}

std::optional<int> ChildProcess::ended()
{
    int status = -1;
    if (m_id > 0 && waitpid(m_id, &status, WNOHANG) == 0)
        return std::nullopt;
    m_id = 0;
    return status;
}

void ChildProcess::kill()
{
    signal(SIGKILL);
    wait();
}

} // namespace vocalith::test
