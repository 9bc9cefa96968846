#include "base/process/ProcessStart.h"

#include <cerrno>
#include <csignal>

#include <unistd.h>

namespace vocalith {
namespace {

constexpr const char* kPlainShell = "/bin/sh";

} // namespace

ProcessStart::ProcessStart()
{
    ::posix_spawn_file_actions_init(&m_files);
    ::posix_spawnattr_init(&m_attributes);
    sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&m_attributes, &signals);
    // Ignoring it is this program's own affair; the child's programs rely on it to end with their reader.
    ::sigaddset(&signals, SIGPIPE);
    ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
    ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
}

ProcessStart::~ProcessStart()
{
    ::posix_spawn_file_actions_destroy(&m_files);
    ::posix_spawnattr_destroy(&m_attributes);
}

void ProcessStart::connect(int file, int stream)
{
    ::posix_spawn_file_actions_adddup2(&m_files, file, stream);
}

void ProcessStart::open(const char* path, int flags, int stream)
{
    ::posix_spawn_file_actions_addopen(&m_files, stream, path, flags, 0);
}

void ProcessStart::closeTheRest()
{
    ::posix_spawn_file_actions_addclosefrom_np(&m_files, STDERR_FILENO + 1);
}

void ProcessStart::workIn(const char* folder)
{
    ::posix_spawn_file_actions_addchdir_np(&m_files, folder);
}

int ProcessStart::spawn(pid_t& id, const std::vector<std::string>& words) const
{
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (const auto& word : words)
        argv.push_back(const_cast<char*>(word.c_str())); // which exec(3) promises to leave as it is
    argv.push_back(nullptr);
    const int refused = ::posix_spawnp(&id, argv[0], &m_files, &m_attributes, argv.data(), environ);
    if (refused != ENOEXEC || words.front() == kPlainShell)
        return refused;
    auto asScript = words;
    asScript.insert(asScript.begin(), kPlainShell);
    return spawn(id, asScript);
}

} // namespace vocalith
