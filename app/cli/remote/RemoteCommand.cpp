#include "app/cli/remote/RemoteCommand.h"

#include "app/cli/ExitCode.h"
#include "app/cli/terminal/Terminal.h"

namespace vocalith {

Task<int> askRunningInstance(RemoteOptions options, RunningInstance& instance, Terminal& terminal)
{
    const auto done = co_await instance.ask(options.request);
    if (done)
        co_return exitSuccess;
    terminal.line(terminal.coloured(Terminal::Colour::red, "Error: ") + userMessage(done.error()));
    co_return exitFailure;
}

} // namespace vocalith
