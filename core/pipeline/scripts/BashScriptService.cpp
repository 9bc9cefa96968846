#include "core/pipeline/scripts/BashScriptService.h"

#include "base/process/Process.h"
#include "core/storage/settings/PersistentAppStorage.h"

#include <fmt/format.h>

#include <QString>

namespace vocalith {
namespace {

constexpr const char* kShell = "/bin/zsh";

std::string decoded(const std::string& bytes)
{
    return QString::fromUtf8(bytes).toStdString();
}

ProcessRequest shellRequest(std::string input, std::string script, double timeout, bool isLoginShell)
{
    const auto limit = std::chrono::duration_cast<Duration>(std::chrono::duration<double>(timeout));
    ProcessRequest request{kShell, {"-c", std::move(script)}, std::move(input), limit};
    if (isLoginShell)
        request.arguments.insert(request.arguments.begin(), "-l");
    return request;
}

} // namespace

BashScriptService::BashScriptService(Clock& clock, PersistentAppStorage& appStorage, Logger logger)
    : m_clock(clock), m_appStorage(appStorage), m_logger(std::move(logger))
{}

Task<Result<BashScriptService::BashResult, BashScriptError>> BashScriptService::run(std::string input,
                                                                                    std::string script, double timeout)
{
    auto request =
        shellRequest(std::move(input), std::move(script), timeout, m_appStorage.useLoginShellForScripts.get());
    const auto ended = co_await runProcess(m_clock, std::move(request));
    if (!ended && ended.error().kind == ProcessError::Kind::cancelled)
        co_return failure(BashScriptError{BashScriptError::Kind::cancelled});
    if (!ended && ended.error().kind == ProcessError::Kind::tooMuchOutput) {
        m_logger.warning("Bash script was ended because it printed too much");
        co_return failure(BashScriptError{BashScriptError::Kind::tooMuchOutput});
    }
    if (!ended) {
        m_logger.error("Failed to execute bash script: " + ended.error().detail);
        co_return failure(BashScriptError{BashScriptError::Kind::launch, ended.error().detail});
    }
    if (ended->timedOut)
        m_logger.warning(fmt::format("Bash script timed out after {:g} seconds", timeout));
    co_return BashResult{decoded(ended->output), decoded(ended->error), ended->exitCode, ended->timedOut};
}

} // namespace vocalith
