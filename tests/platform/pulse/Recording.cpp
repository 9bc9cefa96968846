#include "tests/platform/pulse/Recording.h"

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <numbers>
#include <numeric>

namespace vocalith::test {

void Recording::enter()
{
    if (m_isClosed || m_isInside.exchange(true) || std::this_thread::get_id() == m_mainThread)
        ++m_faults;
}

void Recording::samplesArrived(std::span<const std::int16_t> samples)
{
    enter();
    {
        const std::lock_guard lock(m_mutex);
        if (m_end)
            ++m_faults;
        m_samples.insert(m_samples.end(), samples.begin(), samples.end());
    }
    m_isInside = false;
}

void Recording::streamEnded(Result<void, AudioInputError> reason)
{
    enter();
    {
        const std::lock_guard lock(m_mutex);
        if (m_end)
            ++m_faults;
        m_end = std::move(reason);
    }
    m_isInside = false;
}

std::vector<std::int16_t> Recording::samples(std::size_t from) const
{
    const std::lock_guard lock(m_mutex);
    return {m_samples.begin() + static_cast<std::ptrdiff_t>(std::min(from, m_samples.size())), m_samples.end()};
}

std::size_t Recording::size() const
{
    const std::lock_guard lock(m_mutex);
    return m_samples.size();
}

std::optional<Result<void, AudioInputError>> Recording::end() const
{
    const std::lock_guard lock(m_mutex);
    return m_end;
}

std::optional<AudioInputError::Kind> Recording::failure() const
{
    const std::lock_guard lock(m_mutex);
    return m_end && !*m_end ? std::optional(m_end->error().kind) : std::nullopt;
}

Feeder::Feeder(std::vector<std::int16_t> signal, std::function<void(std::span<const std::int16_t>)> feed)
    : m_thread([signal = std::move(signal), feed = std::move(feed)](const std::stop_token& stop) {
          constexpr auto kPiece = std::chrono::milliseconds(10);
          constexpr std::size_t kSamples = kAudioSampleRate / 100;
          std::mutex mutex;
          std::condition_variable_any wake;
          std::unique_lock lock(mutex);
          auto due = std::chrono::steady_clock::now();
          for (std::size_t at = 0; !stop.stop_requested();
               at = (at + kSamples) % (signal.size() / kSamples * kSamples)) {
              feed(std::span(signal).subspan(at, kSamples));
              wake.wait_until(lock, stop, due += kPiece, [] { return false; });
          }
      })
{}

std::vector<std::int16_t> noise(std::size_t count, std::uint32_t seed)
{
    std::vector<std::int16_t> samples(count);
    for (auto& sample : samples) {
        seed = seed * 1664525U + 1013904223U;
        sample = static_cast<std::int16_t>(seed >> 18U); // never above a half, so that nothing clips
    }
    return samples;
}

std::vector<std::int16_t> speechBand(std::size_t count)
{
    std::vector<std::int16_t> samples(count);
    double phase = 0;
    for (std::size_t i = 0; i < count; ++i) { // from 300 to 2000 Hz
        phase += 2 * std::numbers::pi * (300 + 1700.0 * static_cast<double>(i) / static_cast<double>(count)) /
                 kAudioSampleRate;
        samples[i] = static_cast<std::int16_t>(8000 * std::sin(phase));
    }
    return samples;
}

std::optional<std::size_t> find(const std::vector<std::int16_t>& part, const std::vector<std::int16_t>& whole)
{
    const auto at = std::search(whole.begin(), whole.end(), part.begin(), part.end());
    return at == whole.end() ? std::nullopt : std::optional(static_cast<std::size_t>(at - whole.begin()));
}

double correlation(const std::vector<std::int16_t>& part, const std::vector<std::int16_t>& whole)
{
    const auto product = [](const std::int16_t* a, const std::int16_t* b, std::size_t count) {
        return std::transform_reduce(a, a + count, b, 0.0, std::plus<>(), [](double x, double y) { return x * y; });
    };
    const double energy = product(part.data(), part.data(), part.size());
    double best = 0;
    for (std::size_t lag = 0; lag + part.size() <= whole.size(); ++lag) {
        const auto* stretch = whole.data() + lag;
        // Most lags are nowhere near: a look at the beginning is enough.
        const auto glance = std::min<std::size_t>(part.size(), 400);
        const double near = product(part.data(), stretch, glance);
        if (near < 0.5 * product(part.data(), part.data(), glance))
            continue;
        const double other = product(stretch, stretch, part.size());
        if (other > 0)
            best = std::max(best, product(part.data(), stretch, part.size()) / std::sqrt(energy * other));
    }
    return best;
}

bool hears(const Recording& heard, const std::vector<std::int16_t>& signal, double likeness)
{
    const auto begin = heard.size();
    return runUntil([&] {
        const auto size = heard.size();
        const auto from = std::max(begin, size - std::min(size, 4 * signal.size())); // what came before was looked at
        return correlation(signal, heard.samples(from)) > likeness;
    });
}

} // namespace vocalith::test
