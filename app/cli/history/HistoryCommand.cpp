#include "app/cli/history/HistoryCommand.h"

#include "app/cli/ExitCode.h"
#include "app/cli/history/commands/HistorySubcommands.h"
#include "app/cli/terminal/TerminalInput.h"

namespace vocalith {

HistoryCommand::HistoryCommand(HistoryOptions options, HistoryServices services)
    : m_options(std::move(options)), m_services(std::move(services))
{}

Task<int> HistoryCommand::run()
{
    const auto interrupted = m_services.interrupts.interrupted.subscribe([this] { m_work.requestStop(); });
    const auto terminated = m_services.interrupts.terminated.subscribe([this] { m_work.requestStop(); });
    m_work.start(runChosen());
    co_await m_work.untilEmpty();
    m_services.output.terminal().clearStatus();
    if (m_exitCode == exitCancelled)
        m_services.output.note(std::holds_alternative<HistoryPlayOptions>(m_options) ? "Stopped." : "Cancelled.");
    co_return m_exitCode;
}

Task<void> HistoryCommand::runChosen()
{
    auto chosen = std::visit([this](const auto& options) { return runHistory(options, m_services); }, m_options);
    const int code = co_await chosen;
    m_exitCode = code;
}

} // namespace vocalith
