#pragma once

#include "ports/AudioInput.h"
#include "tests/support/MainLoop.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <thread>

namespace vocalith::test {

/// A listener that keeps everything and watches that it is called as the port promises.
class Recording final : public AudioInputListener {
public:
    void samplesArrived(std::span<const std::int16_t> samples) override;
    void streamEnded(Result<void, AudioInputError> reason) override;

    std::vector<std::int16_t> samples(std::size_t from = 0) const;
    std::size_t size() const;
    std::optional<Result<void, AudioInputError>> end() const;
    std::optional<AudioInputError::Kind> failure() const;
    /// Nothing may arrive from now on.
    void close() { m_isClosed = true; }
    /// Calls that break the promise: after the end, after `close`, on the main thread, or two at once.
    int faults() const { return m_faults; }

private:
    void enter();

    const std::thread::id m_mainThread = std::this_thread::get_id();
    mutable std::mutex m_mutex;
    std::vector<std::int16_t> m_samples;
    std::optional<Result<void, AudioInputError>> m_end;
    std::atomic<bool> m_isClosed = false;
    std::atomic<bool> m_isInside = false;
    std::atomic<int> m_faults = 0;
};

/// Feeds a signal over and over on a thread of its own, piece by piece in about real time, until it is destroyed.
class Feeder {
public:
    Feeder(std::vector<std::int16_t> signal, std::function<void(std::span<const std::int16_t>)> feed);

private:
    std::jthread m_thread;
};

/// A signal without repetitions, the same every time; `seed` makes others.
std::vector<std::int16_t> noise(std::size_t count, std::uint32_t seed = 1);
/// The same within the band of speech, which survives a change of rate.
std::vector<std::int16_t> speechBand(std::size_t count);

/// Where `part` begins in `whole` exactly, if it is there.
std::optional<std::size_t> find(const std::vector<std::int16_t>& part, const std::vector<std::int16_t>& whole);
/// The best normalised correlation of `part` with any stretch of `whole`, 0 to 1.
double correlation(const std::vector<std::int16_t>& part, const std::vector<std::int16_t>& whole);
/// Waits until what arrives from now on has the signal in it, at least as like as this correlation; the test fails when
/// it does not come. A server skips when the machine is busy, so the signal is fed over and over meanwhile.
bool hears(const Recording& heard, const std::vector<std::int16_t>& signal, double likeness = 0.9);

} // namespace vocalith::test
