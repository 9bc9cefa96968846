#include "base/pipes/PipeReader.h"

#include "base/OneShot.h"

#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <variant>

namespace vocalith {
namespace {

constexpr std::size_t kMostBytes = std::size_t{512} << 20;
constexpr std::size_t kBytesPerSecond = 20'000'000;
constexpr Duration kPatience = std::chrono::milliseconds(500);
constexpr int kReadsAtOnce = 8; // so that the rest of the program has its turn

enum class Progress { waiting, ended, failed };

class Reading {
public:
    Reading(Clock& clock, std::vector<PipeSource> sources, std::function<void()> done)
        : m_clock(clock), m_done(std::move(done)), m_started(clock.instant())
    {
        for (auto& source : sources) {
            auto& stream = m_streams.emplace_back(std::make_unique<Stream>(std::move(source)));
            if (stream->source.pipe.isOpen())
                start(*stream);
            else
                stream->progress = Progress::failed;
        }
        wait(m_running > 0 ? kPatience : Duration::zero());
    }

    PipeContents contents() const
    {
        PipeContents contents;
        for (const auto& stream : m_streams) {
            if (stream->progress == Progress::ended)
                contents.ended.push_back({stream->source.name, shared(contents.ended, *stream)});
            else
                contents.isComplete = false;
        }
        return contents;
    }

private:
    struct Stream {
        explicit Stream(PipeSource from) : source(std::move(from)) {}
        PipeSource source;
        std::optional<QSocketNotifier> notifier;
        std::shared_ptr<std::string> bytes = std::make_shared<std::string>();
        Progress progress = Progress::waiting;
    };

    void start(Stream& stream)
    {
        const int pipe = stream.source.pipe.get();
        fcntl(pipe, F_SETFL, fcntl(pipe, F_GETFL) | O_NONBLOCK);
        stream.notifier.emplace(pipe, QSocketNotifier::Read);
        QObject::connect(&*stream.notifier, &QSocketNotifier::activated, &*stream.notifier,
                         [this, &stream] { handle(stream); });
        ++m_running;
    }

    /// Programs give the same text under many names.
    static PipeBytes shared(const std::vector<PipeContent>& earlier, const Stream& stream)
    {
        const auto same =
            std::ranges::find_if(earlier, [&](const auto& other) { return *other.bytes == *stream.bytes; });
        return same == earlier.end() ? PipeBytes(stream.bytes) : same->bytes;
    }

    void wait(Duration time)
    {
        m_timer = m_clock.after(time, [this] {
            const auto allowed = kPatience + std::chrono::microseconds(m_received * 1'000'000 / kBytesPerSecond);
            const auto rest = m_running == 0 ? Duration::zero() : allowed - (m_clock.instant() - m_started);
            if (rest > Duration::zero())
                wait(rest);
            else
                finish();
        });
    }

    Progress readSome(Stream& stream)
    {
        std::array<char, 65536> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): it is filled by the read
        for (int count = 0; count < kReadsAtOnce; ++count) {
            const auto size = ::read(stream.source.pipe.get(), buffer.data(), buffer.size());
            if (size < 0)
                return errno == EAGAIN || errno == EINTR ? Progress::waiting : Progress::failed;
            if (size == 0)
                return Progress::ended;
            m_received += static_cast<std::size_t>(size);
            if (m_received > kMostBytes)
                return Progress::failed;
            stream.bytes->append(buffer.data(), static_cast<std::size_t>(size));
        }
        return Progress::waiting;
    }

    void handle(Stream& stream)
    {
        stream.progress = readSome(stream);
        if (stream.progress == Progress::waiting)
            return;
        stream.notifier->setEnabled(false);
        if (--m_running == 0)
            finish();
    }

    void finish()
    {
        for (const auto& stream : m_streams) {
            if (stream->notifier)
                stream->notifier->setEnabled(false);
        }
        m_done();
    }

    Clock& m_clock;
    const std::function<void()> m_done;
    const Instant m_started;
    std::vector<std::unique_ptr<Stream>> m_streams;
    std::size_t m_running = 0;
    std::size_t m_received = 0;
    Timer m_timer;
};

} // namespace

Task<PipeContents> readPipes(Clock& clock, std::vector<PipeSource> sources)
{
    if (sources.empty())
        co_return PipeContents();
    OneShot<std::monostate> done;
    std::function<void()> finished = [resolve = done.resolver()] { resolve({}); };
    const Reading reading(clock, std::move(sources), std::move(finished));
    const auto outcome = co_await done;
    auto contents = reading.contents();
    contents.isCancelled = !outcome;
    co_return contents;
}

} // namespace vocalith
