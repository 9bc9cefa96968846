#include "app/cli/history/commands/Confirmation.h"

#include "app/cli/terminal/Terminal.h"
#include "base/OneShot.h"

#include <QSocketNotifier>

#include <array>

#include <unistd.h>

namespace vocalith {

bool canAsk(const Terminal& terminal)
{
    return terminal.isInteractive() && ::isatty(STDIN_FILENO) == 1;
}

Task<bool> confirmed(std::string question, Terminal& terminal)
{
    terminal.status(question + " [y/N] ");
    OneShot<char> answered;
    // A terminal gives the line once it is complete.
    QSocketNotifier notifier(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&notifier, resolve = answered.resolver()] {
        std::array<char, 256> line{};
        const auto count = ::read(STDIN_FILENO, line.data(), line.size());
        notifier.setEnabled(false);
        resolve(count > 0 ? line[0] : 'n');
    });
    const auto answer = co_await answered;
    terminal.clearStatus();
    co_return answer && (*answer == 'y' || *answer == 'Y');
}

} // namespace vocalith
