#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vocalith {

/// Samples that wait for their turn; keeps its memory.
class SampleQueue {
public:
    void push(std::span<const std::int16_t> samples);
    void pushSilence(std::size_t count);
    std::int16_t pop();
    void drop(std::size_t count);

    std::size_t size() const { return m_samples.size() - m_head; }
    bool empty() const { return size() == 0; }
    std::int16_t operator[](std::size_t index) const { return m_samples[m_head + index]; }

private:
    void compact();

    std::vector<std::int16_t> m_samples;
    std::size_t m_head = 0;
};

/// Mixes two live streams of 16 kHz samples, each counted by its own device's clock, into one timeline without drift.
///
/// The first stream (the microphone) is the master: its samples come out one for one. It is held back by a tenth of a
/// second, so that the second stream's samples of the same moment have arrived. Both queues are then equally long as
/// long as the streams are aligned; the difference steers the speed at which the second stream is read (at most
/// +-2000 ppm, cubic interpolation). A gap in the second stream is silence; a difference that is too large to be a
/// clock's is made good at once, with a short fade. When the master stops or gives nothing for a second, the second
/// stream carries the timeline alone. The sum saturates. No clock, no lock, no thread: the owner's.
class StreamMixer {
public:
    enum class Input { master, second };

    /// Takes samples that arrive now and appends to `mixed` what is ready.
    void push(Input input, std::span<const std::int16_t> samples, std::vector<std::int16_t>& mixed);
    /// The input gives nothing more; the other carries on.
    void end(Input input, std::vector<std::int16_t>& mixed);
    /// Appends all that is still held back.
    void finish(std::vector<std::int16_t>& mixed);

private:
    void pushMaster(std::span<const std::int16_t> samples);
    void pushSecond(std::span<const std::int16_t> samples);
    void alignSecond();
    void steer(std::size_t arrived);
    void skip(std::ptrdiff_t samples);
    std::size_t ready();
    void produce(std::vector<std::int16_t>& mixed);
    float nextSecond();
    void breakOff();
    std::size_t secondFill() const { return m_silence + m_second.size(); }

    SampleQueue m_master;
    SampleQueue m_second;
    bool m_masterEnded = false;
    bool m_secondEnded = false;
    bool m_masterFlows = false;      ///< the master has given samples, and still does
    bool m_carrying = false;         ///< the second stream carries the timeline while the master gives nothing
    bool m_aligned = false;          ///< the second stream has its place in the timeline
    std::size_t m_withoutMaster = 0; ///< samples of the second stream since the master's last

    std::size_t m_silence = 0;   ///< output samples before the second queue is read
    double m_error = 0;          ///< smoothed: by how many samples the second queue is longer than the master's
    double m_rate = 1;           ///< second-stream samples per output sample
    double m_phase = 0;          ///< position between the first two samples of the second queue
    std::int16_t m_previous = 0; ///< the sample before the second queue
    float m_last = 0;            ///< what the second stream gave last
    float m_tail = 0;            ///< what fades out after a break
    float m_gain = 0;            ///< fades in after a break
};

} // namespace vocalith
