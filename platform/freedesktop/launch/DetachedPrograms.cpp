#include "platform/freedesktop/launch/DetachedPrograms_p.h"

#include "base/OneShot.h"
#include "base/Text.h"
#include "base/process/ProcessEnd.h"
#include "base/process/ProcessStart.h"

#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace vocalith {
namespace {

constexpr std::size_t kLongestComplaint = 400; // bytes
constexpr const char* kNowhere = "/dev/null";

/// Nothing to read, nobody who reads what is written, none of this program's files, and the user's folder to work in.
void detach(ProcessStart& start, const Complaints& complaints)
{
    start.open(kNowhere, O_RDONLY, STDIN_FILENO);
    start.open(kNowhere, O_WRONLY, STDOUT_FILENO);
    if (complaints.descriptor() >= 0)
        start.connect(complaints.descriptor(), STDERR_FILENO);
    else
        start.open(kNowhere, O_WRONLY, STDERR_FILENO);
    start.closeTheRest();
    const char* const home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe): nobody changes it
    if (home && ::access(home, X_OK) == 0)
        start.workIn(home);
}

} // namespace

Complaints::Complaints() : m_file(::memfd_create("complaints", MFD_CLOEXEC))
{}

std::string Complaints::text() const
{
    std::array<char, kLongestComplaint> end{};
    const auto size = m_file.isOpen() ? ::lseek(m_file.get(), 0, SEEK_END) : 0;
    const auto from = std::max<off_t>(0, size - static_cast<off_t>(end.size()));
    const auto count = ::pread(m_file.get(), end.data(), end.size(), from);
    std::string_view text(end.data(), static_cast<std::size_t>(std::max<ssize_t>(0, count)));
    if (from > 0) // not from the middle of a line, unless there is but one
        text.remove_prefix(std::min(text.find('\n') + 1, text.size()));
    return cleanText(text, ' ');
}

void Complaints::close()
{
    m_file.close();
}

/// A child until it has ended.
struct DetachedPrograms::Child {
    Child(pid_t id, OneShot<std::optional<int>>::Resolver onEnd)
        : m_id(id), m_onEnd(std::move(onEnd)), m_running(watchProcess(id)),
          m_notifier(m_running.get(), QSocketNotifier::Read)
    {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { reap(); });
        m_notifier.setEnabled(m_running.isOpen());
    }

    bool hasEnded() const { return m_hasEnded; }

private:
    void reap()
    {
        m_notifier.setEnabled(false);
        m_hasEnded = true;
        m_onEnd(reapProcess(m_id));
    }

    const pid_t m_id;
    const OneShot<std::optional<int>>::Resolver m_onEnd;
    const FileDescriptor m_running; ///< becomes readable when it has ended
    QSocketNotifier m_notifier;
    bool m_hasEnded = false;
};

DetachedPrograms::DetachedPrograms(Clock& clock) : m_clock(clock)
{}

DetachedPrograms::~DetachedPrograms() = default;

Task<Result<ProgramState, std::error_code>> DetachedPrograms::run(std::vector<std::string> words, Duration patience)
{
    Complaints complaints;
    pid_t id = 0;
    ProcessStart start;
    detach(start, complaints);
    if (const int refused = start.spawn(id, words))
        co_return failure(std::error_code(refused, std::generic_category()));
    co_return co_await watch(id, std::move(complaints), patience);
}

Task<ProgramState> DetachedPrograms::watch(pid_t id, Complaints complaints, Duration patience)
{
    std::erase_if(m_children, [](const auto& child) { return child->hasEnded(); });
    OneShot<std::optional<int>> end;
    const auto resolve = end.resolver();
    m_children.push_back(std::make_unique<Child>(id, resolve));
    const auto timer = m_clock.after(patience, [resolve] { resolve(std::nullopt); });
    const auto ended = co_await end;
    ProgramState state{!ended, ended.value_or(std::nullopt), {}};
    if (state.exitCode)
        state.complaint = complaints.text();
    complaints.close();
    co_return state;
}

} // namespace vocalith
