#include "tests/support/Faults.h"

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <fstream>

namespace vocalith::test {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;
constexpr const char* kFiller = "filler";
constexpr rlim_t kNoGrowth = 16; // bytes

bool mountSmall(const fs::path& folder)
{
    const auto user = ::getuid();
    const auto group = ::getgid();
    if (::unshare(CLONE_NEWNS) != 0) {
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
            return false;
        std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
        std::ofstream("/proc/self/setgroups") << "deny"; // without it the next line is not allowed
        std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    }
    return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("small", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
}

void limitFiles(rlim_t size)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{size, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace

pid_t inAnotherProcess(const std::function<int()>& work)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(work());
    EXPECT_GT(child, 0);
    return child;
}

int statusOf(pid_t child)
{
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return status;
}

int firstUnmet(std::initializer_list<bool> expectations)
{
    const auto* unmet = std::find(expectations.begin(), expectations.end(), false);
    return unmet == expectations.end() ? 0 : static_cast<int>(unmet - expectations.begin()) + 1;
}

SmallDisk::SmallDisk(fs::path folder) : m_folder(std::move(folder)), m_isMounted(mountSmall(m_folder))
{}

void SmallDisk::fill() const
{
    if (!m_isMounted) {
        limitFiles(kNoGrowth);
        return;
    }
    std::ofstream filler(m_folder / kFiller);
    while (filler << std::string(1024, 'x') << std::flush) {
    }
}

void SmallDisk::clear() const
{
    if (m_isMounted)
        fs::remove(m_folder / kFiller);
    else
        limitFiles(RLIM_INFINITY);
}

OrdinaryUser::OrdinaryUser() : m_wasSuperuser(::geteuid() == 0 && ::seteuid(kNobody) == 0)
{}

OrdinaryUser::~OrdinaryUser()
{
    EXPECT_TRUE(!m_wasSuperuser || ::seteuid(0) == 0);
}

} // namespace vocalith::test
