// A trivial script must cost little more than the shell that runs it: the end of the script is noticed when it happens.

#include "base/Clock.h"
#include "base/TaskScope.h"
#include "core/pipeline/scripts/BashScriptService.h"
#include "core/storage/settings/PersistentAppStorage.h"

#include <QCoreApplication>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace vocalith;

namespace {

constexpr double kLimit = 1.5;
constexpr int kRounds = 60;
constexpr const char* kScript = "cat";
constexpr const char* kWords = "some words";

[[noreturn]] void giveUp(const char* why)
{
    std::printf("script: %s\n", why);
    std::exit(1);
}

/// The shell by itself, with the same words: one process that waits for the other at every turn.
void runShell()
{
    int input[2];
    int output[2];
    if (::pipe2(input, O_CLOEXEC) != 0 || ::pipe2(output, O_CLOEXEC) != 0)
        giveUp("there are no pipes");
    posix_spawn_file_actions_t files;
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawn_file_actions_adddup2(&files, input[0], STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&files, output[1], STDOUT_FILENO);
    const char* const arguments[] = {"/bin/zsh", "-c", kScript, nullptr};
    pid_t id = 0;
    if (::posix_spawn(&id, arguments[0], &files, nullptr, const_cast<char* const*>(arguments), environ) != 0)
        giveUp("the shell does not start");
    ::posix_spawn_file_actions_destroy(&files);
    ::close(input[0]);
    ::close(output[1]);
    const std::string words(kWords);
    const auto written = ::write(input[1], words.data(), words.size());
    ::close(input[1]);
    std::string answer(words.size() + 1, '\0');
    const auto read = ::read(output[0], answer.data(), answer.size());
    ::close(output[0]);
    if (::waitpid(id, nullptr, 0) != id || written != read)
        giveUp("the shell does not run");
}

using ScriptResult = Result<BashScriptService::BashResult, BashScriptError>;

Task<void> runScript(BashScriptService& service, std::optional<ScriptResult>& result)
{
    auto task = service.run(kWords, kScript, 15);
    auto ended = co_await task;
    result = std::move(ended);
}

void runOurs(BashScriptService& service)
{
    std::optional<ScriptResult> result;
    TaskScope scope;
    scope.start(runScript(service, result));
    while (!scope.isEmpty())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (!*result || (*result)->output != kWords)
        giveUp("the script does not run");
}

template <class Work>
double milliseconds(Work work)
{
    const auto began = std::chrono::steady_clock::now();
    work();
    return toSeconds(std::chrono::steady_clock::now() - began) * 1000;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    std::signal(SIGPIPE, SIG_IGN);
    SystemClock clock;
    PersistentAppStorage storage("/nonexistent/settings.json", clock, Logger());
    BashScriptService service(clock, storage, Logger());
    std::vector<double> shell;
    std::vector<double> ours;
    for (int round = 0; round < kRounds; ++round) { // in turns, so that a busy machine slows both
        shell.push_back(milliseconds(runShell));
        ours.push_back(milliseconds([&service] { runOurs(service); }));
    }
    // The quickest of each: what else the machine does only ever adds, and more to what waits more often.
    const double quickest = std::ranges::min(ours);
    const double ratio = quickest / std::ranges::min(shell);
    std::printf("script: ratio %.3f (limit %.1f), %.1f ms against %.1f ms of the shell alone\n", ratio, kLimit,
                quickest, std::ranges::min(shell));
    return ratio <= kLimit ? 0 : 1;
}
