#include "platform/pulse/PlaybackQueue_p.h"

#include <algorithm>

namespace vocalith {
namespace {

constexpr std::size_t kFull = 2 * 16000; // samples: two seconds

} // namespace

bool PlaybackQueue::push(std::span<const float> samples)
{
    std::unique_lock lock(m_mutex);
    m_hasRoom.wait(lock, [this] { return m_samples.size() < kFull || m_closed.stop_requested(); });
    if (m_closed.stop_requested())
        return false;
    m_samples.insert(m_samples.end(), samples.begin(), samples.end());
    return true;
}

void PlaybackQueue::finish()
{
    const std::lock_guard lock(m_mutex);
    m_isFinished = true;
}

std::size_t PlaybackQueue::pop(std::span<float> samples)
{
    const std::lock_guard lock(m_mutex);
    const auto count = std::min(samples.size(), m_samples.size());
    const auto end = m_samples.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(m_samples.begin(), end, samples.begin());
    m_samples.erase(m_samples.begin(), end);
    if (m_samples.size() < kFull)
        m_hasRoom.notify_one();
    return count;
}

bool PlaybackQueue::isAtEnd() const
{
    const std::lock_guard lock(m_mutex);
    return m_isFinished && m_samples.empty();
}

void PlaybackQueue::close()
{
    {
        const std::lock_guard lock(m_mutex);
        m_samples.clear();
        m_closed.request_stop();
    }
    m_hasRoom.notify_all();
}

} // namespace vocalith
