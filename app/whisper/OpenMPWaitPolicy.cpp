#include "app/whisper/OpenMPWaitPolicy.h"

#include <cstdlib>
#include <filesystem>

#include <unistd.h>

namespace vocalith {
namespace {

constexpr auto kGuard = "VOCALITH_REEXECUTED"; // whatever goes wrong, one start anew is all there is

} // namespace

void reexecuteWithPassiveWaiting(char** argv)
{
    // Should the library abort, it shall not start a debugger.
    setenv("GGML_NO_BACKTRACE", "1", 0);
    const bool isSecondStart = std::getenv(kGuard) != nullptr;
    unsetenv(kGuard);
    if (isSecondStart) { // the library has read it; the programs that this one starts decide for themselves
        unsetenv("OMP_WAIT_POLICY");
        return;
    }
    if (std::getenv("OMP_WAIT_POLICY") != nullptr || std::getenv("GOMP_SPINCOUNT") != nullptr)
        return;
    std::error_code error;
    // The link itself would name the process "exe".
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error && setenv("OMP_WAIT_POLICY", "passive", 1) == 0 && setenv(kGuard, "1", 1) == 0)
        execv(program.c_str(), argv);
    unsetenv(kGuard);
}

} // namespace vocalith
