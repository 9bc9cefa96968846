#include "base/pipes/PipeWriter.h"

#include <QSocketNotifier>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>

namespace vocalith {

class PipeWriter::Job {
public:
    Job(FileDescriptor pipe, std::shared_ptr<const std::string> bytes, std::function<void(bool)> ended)
        : m_pipe(std::move(pipe)), m_bytes(std::move(bytes)), m_ended(std::move(ended)),
          m_notifier(m_pipe.get(), QSocketNotifier::Write)
    {
        fcntl(m_pipe.get(), F_SETFL, fcntl(m_pipe.get(), F_GETFL) | O_NONBLOCK);
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { writeSome(); });
    }

private:
    void writeSome()
    {
        while (m_written < m_bytes->size()) {
            const auto size = ::write(m_pipe.get(), m_bytes->data() + m_written, m_bytes->size() - m_written);
            if (size < 0 && (errno == EAGAIN || errno == EINTR))
                return;
            if (size < 0)
                return end(false);
            m_written += static_cast<std::size_t>(size);
        }
        end(true);
    }

    void end(bool isComplete)
    {
        m_notifier.setEnabled(false);
        m_pipe.close(); // which tells the reader that this is all
        const auto ended = std::move(m_ended);
        ended(isComplete); // destroys this
    }

    FileDescriptor m_pipe;
    const std::shared_ptr<const std::string> m_bytes;
    std::function<void(bool)> m_ended;
    QSocketNotifier m_notifier;
    std::size_t m_written = 0;
};

PipeWriter::PipeWriter() = default;
PipeWriter::~PipeWriter() = default;

void PipeWriter::write(FileDescriptor pipe, std::shared_ptr<const std::string> bytes, Done done)
{
    auto& job = m_jobs.emplace_back();
    // The job is not known by its place, which changes, but by itself.
    const auto identity = std::make_shared<Job*>(nullptr);
    job = std::make_unique<Job>(std::move(pipe), std::move(bytes), [this, identity, done](bool isComplete) {
        const auto ended = std::ranges::find(m_jobs, *identity, [](const auto& one) { return one.get(); });
        const auto kept = std::move(*ended);
        m_jobs.erase(ended);
        done(isComplete);
    });
    *identity = job.get();
}

} // namespace vocalith
