#include "base/process/Process.h"

#include "base/OneShot.h"
#include "base/TaskScope.h"
#include "base/pipes/PipeWriter.h"
#include "base/process/ProcessEnd.h"
#include "base/process/SpawnedProcess_p.h"

#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <functional>
#include <memory>
#include <variant>

#include <fcntl.h>
#include <sys/ioctl.h>

namespace vocalith {
namespace {

constexpr std::size_t kMostBytes = std::size_t{128} << 20;
constexpr int kReadsAtOnce = 8; // so that the rest of the program has its turn
constexpr Duration kStragglers = std::chrono::milliseconds(100);
/// For the first output of what a shell has started and not waited for, a filter behind `>( … )` for instance.
constexpr Duration kFirstWords = std::chrono::seconds(2);
constexpr Duration kGrace = std::chrono::milliseconds(500);

/// Takes what comes out of a pipe.
class OutputPipe {
public:
    /// `onEnd` is called when the pipe has ended, and when it is full.
    OutputPipe(FileDescriptor pipe, const std::function<void()>& onEnd)
        : m_pipe(std::move(pipe)), m_notifier(m_pipe.get(), QSocketNotifier::Read)
    {
        ::fcntl(m_pipe.get(), F_SETFL, ::fcntl(m_pipe.get(), F_GETFL) | O_NONBLOCK);
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this, onEnd] {
            for (int count = 0; count < kReadsAtOnce && readOnce() > 0;)
                ++count;
            if (m_hasEnded || isFull())
                onEnd();
        });
    }

    bool hasEnded() const { return m_hasEnded; }
    bool isEmpty() const { return m_bytes.empty(); }
    bool isFull() const { return m_bytes.size() > kMostBytes; }
    std::string takeBytes()
    {
        m_bytes.resize(std::min(m_bytes.size(), kMostBytes));
        return std::move(m_bytes);
    }

    /// Takes what is in the pipe by now, however fast others go on filling it.
    void readWhatIsThere()
    {
        int waiting = 0;
        if (m_hasEnded || ::ioctl(m_pipe.get(), FIONREAD, &waiting) != 0)
            return;
        for (ssize_t size = 1; size > 0 && waiting >= 0; waiting -= static_cast<int>(size))
            size = readOnce();
    }

    void stop() { m_notifier.setEnabled(false); }

private:
    /// Yields how many bytes there were.
    ssize_t readOnce()
    {
        if (isFull()) {
            stop();
            return 0;
        }
        std::array<char, 65536> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): it is filled by the read
        const auto size = ::read(m_pipe.get(), buffer.data(), std::min(buffer.size(), kMostBytes + 1 - m_bytes.size()));
        if (size > 0)
            m_bytes.append(buffer.data(), static_cast<std::size_t>(size));
        if (size == 0 || (size < 0 && errno != EAGAIN && errno != EINTR)) {
            m_hasEnded = true;
            stop();
        }
        return size;
    }

    FileDescriptor m_pipe;
    QSocketNotifier m_notifier;
    std::string m_bytes;
    bool m_hasEnded = false;
};

/// The life of a child until it has ended and been reaped, with its output taken.
class RunningProcess {
public:
    RunningProcess(Clock& clock, SpawnedProcess process, ProcessRequest request, std::function<void()> onEnd)
        : m_clock(clock), m_process(std::move(process)), m_onEnd(std::move(onEnd)),
          m_output(std::move(m_process.output), [this] { outputHasEnded(); }),
          m_error(std::move(m_process.error), [this] { outputHasEnded(); }),
          m_leaderEnd(m_process.running.get(), QSocketNotifier::Read)
    {
        QObject::connect(&m_leaderEnd, &QSocketNotifier::activated, &m_leaderEnd, [this] { leaderHasEnded(); });
        auto input = std::make_shared<const std::string>(std::move(request.input));
        m_input.write(std::move(m_process.input), std::move(input), [](bool) {});
        if (request.timeout)
            m_timer = m_clock.after(*request.timeout, [this] {
                m_timedOut = true;
                terminate();
            });
    }

    /// Asks the group to end, and then ends it.
    void terminate()
    {
        if (m_isTerminating || m_hasLeaderEnded)
            return finishLate();
        m_isTerminating = true;
        signalGroup(SIGTERM);
        signalGroup(SIGCONT); // one that was stopped could not obey
        m_timer = m_clock.after(kGrace, [this] { signalGroup(SIGKILL); });
    }

    Result<ProcessResult, ProcessError> takeResult()
    {
        if (m_hasPrintedTooMuch)
            return failure(ProcessError{ProcessError::Kind::tooMuchOutput});
        return ProcessResult{m_output.takeBytes(), m_error.takeBytes(), m_exitCode, m_timedOut};
    }

private:
    void signalGroup(int number) const { ::kill(-m_process.id, number); }

    void leaderHasEnded()
    {
        m_leaderEnd.setEnabled(false);
        m_hasLeaderEnded = true;
        if (m_isTerminating)
            signalGroup(SIGKILL); // before the leader is reaped, which keeps the group's number from being another's
        m_exitCode = reapProcess(m_process.id);
        m_output.readWhatIsThere();
        m_error.readWhatIsThere();
        m_timer = m_clock.after(m_output.isEmpty() ? kFirstWords : kStragglers, [this] { finish(); });
        finishWhenDone();
    }

    void outputHasEnded()
    {
        // What goes on in the background is not asked to end, also when it prints without end.
        if (!m_hasLeaderEnded && (m_output.isFull() || m_error.isFull())) {
            m_hasPrintedTooMuch = true;
            return terminate();
        }
        finishWhenDone();
    }

    void finishWhenDone()
    {
        if (m_hasLeaderEnded && (m_isTerminating || (m_output.hasEnded() && m_error.hasEnded())))
            finish();
    }

    void finishLate()
    {
        if (m_hasLeaderEnded)
            finish();
    }

    void finish()
    {
        m_timer.reset();
        m_output.stop();
        m_error.stop();
        if (const auto ended = std::exchange(m_onEnd, {}))
            ended();
    }

    Clock& m_clock;
    SpawnedProcess m_process;
    std::function<void()> m_onEnd;
    OutputPipe m_output;
    OutputPipe m_error;
    QSocketNotifier m_leaderEnd;
    PipeWriter m_input;
    Timer m_timer; ///< of what is waited for: the timeout, then the grace or the stragglers
    bool m_isTerminating = false;
    bool m_hasLeaderEnded = false;
    bool m_timedOut = false;
    bool m_hasPrintedTooMuch = false;
    std::int32_t m_exitCode = 0;
};

using Ended = OneShot<std::monostate>;

Task<void> untilResolved(Ended& ended)
{
    const auto outcome = co_await ended;
    static_cast<void>(outcome);
}

} // namespace

Task<Result<ProcessResult, ProcessError>> runProcess(Clock& clock, ProcessRequest request)
{
    const auto stop = co_await currentStopToken();
    if (stop.stop_requested())
        co_return failure(ProcessError{ProcessError::Kind::cancelled});
    auto spawned = spawnProcess(request.program, request.arguments);
    if (!spawned)
        co_return failure(ProcessError{ProcessError::Kind::launch, std::move(spawned.error())});
    Ended ended;
    Ended gone; // told the same, for a wait that a stop does not cut short
    std::function<void()> onEnd = [first = ended.resolver(), second = gone.resolver()] {
        first({});
        second({});
    };
    RunningProcess process(clock, *std::move(spawned), std::move(request), std::move(onEnd));
    const auto waited = co_await ended;
    if (waited)
        co_return process.takeResult();
    process.terminate();
    TaskScope dying; // has a stop of its own, which nobody requests
    dying.start(untilResolved(gone));
    co_await dying.untilEmpty();
    co_return failure(ProcessError{ProcessError::Kind::cancelled});
}

} // namespace vocalith
