#include "app/cli/terminal/TerminalInput.h"

#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <string_view>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace vocalith {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

// A signal handler can reach nothing but a global.
std::atomic<int> signalPipe = -1;
std::atomic<bool> isInterrupted = false;
std::atomic<const termios*> terminalBefore = nullptr;

void forwardSignal(int number)
{
    const int saved = errno;
    const auto byte = static_cast<char>(number);
    const auto written = ::write(signalPipe.load(), &byte, 1);
    static_cast<void>(written);
    // A second Ctrl-C ends the program at once. A second polite request does not: the first one is being served.
    if (number == SIGINT && isInterrupted.exchange(true)) {
        if (const auto* before = terminalBefore.load())
            ::tcsetattr(STDIN_FILENO, TCSANOW, before);
        std::signal(number, SIG_DFL);
        std::raise(number);
    }
    errno = saved;
}

} // namespace

struct InterruptSignals::Private {
    std::array<int, 2> pipe{-1, -1};
    std::unique_ptr<QSocketNotifier> notifier;
};

InterruptSignals::InterruptSignals() : d(std::make_unique<Private>())
{
    if (::pipe2(d->pipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return; // then Ctrl-C ends the program the plain way
    signalPipe = d->pipe[1];
    d->notifier = std::make_unique<QSocketNotifier>(d->pipe[0], QSocketNotifier::Read);
    QObject::connect(d->notifier.get(), &QSocketNotifier::activated, d->notifier.get(), [this] {
        char number = 0;
        while (::read(d->pipe[0], &number, 1) == 1) {
            if (number == SIGINT)
                interrupted.emit();
            else
                terminated.emit();
        }
    });
    for (const int number : kSignals)
        std::signal(number, forwardSignal);
}

InterruptSignals::~InterruptSignals()
{
    for (const int number : kSignals)
        std::signal(number, SIG_DFL);
    for (const int end : d->pipe) {
        if (end >= 0)
            ::close(end);
    }
}

namespace {

bool isPipe(int descriptor)
{
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

} // namespace

struct TerminalKeys::Private {
    bool isTerminal = ::isatty(STDIN_FILENO) == 1;
    termios before{};
    std::unique_ptr<QSocketNotifier> notifier;
};

TerminalKeys::TerminalKeys() : d(std::make_unique<Private>())
{
    if (d->isTerminal && ::tcgetattr(STDIN_FILENO, &d->before) == 0) {
        termios keyByKey = d->before;
        keyByKey.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        ::tcsetattr(STDIN_FILENO, TCSANOW, &keyByKey);
        terminalBefore = &d->before;
    }
    if (!d->isTerminal && !isPipe(STDIN_FILENO))
        return;
    d->notifier = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(d->notifier.get(), &QSocketNotifier::activated, d->notifier.get(), [this] {
        std::array<char, 256> bytes{};
        const auto count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count < 0) {
            // A terminal that is gone stays readable for ever; its end comes as a signal.
            d->notifier->setEnabled(errno == EINTR || errno == EAGAIN);
            return;
        }
        const std::string_view keys(bytes.data(), static_cast<std::size_t>(count));
        if (keys.empty())
            d->notifier->setEnabled(false);
        if (keys.empty() || keys.find_first_of("\r\n") != std::string_view::npos)
            enterPressed.emit();
        else if (d->isTerminal && keys == "\x1b") // alone: with more behind it, it is an arrow or a function key
            escapePressed.emit();
    });
}

TerminalKeys::~TerminalKeys()
{
    terminalBefore = nullptr;
    if (d->isTerminal)
        ::tcsetattr(STDIN_FILENO, TCSANOW, &d->before);
}

} // namespace vocalith
