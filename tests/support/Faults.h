#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <initializer_list>

/// The ways in which a machine turns against a program.
namespace vocalith::test {

/// Runs `work` in a process of its own, without the threads of this one; its exit code is what `work` yields.
pid_t inAnotherProcess(const std::function<int()>& work);
/// Waits for the end of that process and yields its status as `waitpid` has it.
int statusOf(pid_t child);

/// For the exit code of such a process: 0 when all expectations were met, else the number of the first that was not.
int firstUnmet(std::initializer_list<bool> expectations);

/// A file system of 64 kB in place of a folder, for the process that makes it and only for it. Where the machine does
/// not let a process have one, full means that no file may grow any more.
class SmallDisk {
public:
    explicit SmallDisk(std::filesystem::path folder);

    void fill() const;
    void clear() const;

private:
    std::filesystem::path m_folder;
    bool m_isMounted;
};

/// Until its end the process is a user whom permissions hold up; a superuser they do not.
class OrdinaryUser {
public:
    OrdinaryUser();
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser();

private:
    bool m_wasSuperuser;
};

} // namespace vocalith::test
