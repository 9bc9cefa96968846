#include "core/audio/StreamMixer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vocalith {

namespace {

constexpr double kSampleRate = 16000;
constexpr std::size_t kHeldBack = 1600;        // more than one piece of any capture, so that both streams' are there
constexpr std::size_t kStall = 2 * kHeldBack;  // from then on the queues say nothing about the clocks
constexpr std::size_t kMasterPatience = 16000; // the master's own scheduling never stalls it that long
constexpr std::size_t kLookAhead = 3;          // what the interpolation reads
// 1 ms of misalignment asks for 200 ppm: the difference decays within five seconds and stays at 1 ms for clocks that
// differ by that much.
constexpr double kRatePerSample = 200e-6 / 16;
constexpr double kMaxRateChange = 2000e-6;
constexpr double kSmoothing = 1.0 * kSampleRate;
constexpr double kMaxError = 0.06 * kSampleRate;
constexpr float kFadeIn = 1.0F / 64;
constexpr float kFadeOut = 0.95F;

/// Cubic Hermite through y0 (at 0) and y1 (at 1) with the slopes of their neighbours.
float interpolate(float before, float y0, float y1, float after, float at)
{
    const float c1 = 0.5F * (y1 - before);
    const float c2 = before - 2.5F * y0 + 2 * y1 - 0.5F * after;
    const float c3 = 0.5F * (after - before) + 1.5F * (y0 - y1);
    return ((c3 * at + c2) * at + c1) * at + y0;
}

std::int16_t saturated(float value)
{
    using Limits = std::numeric_limits<std::int16_t>;
    return static_cast<std::int16_t>(std::clamp<long>(std::lroundf(value), Limits::min(), Limits::max()));
}

} // namespace

void SampleQueue::push(std::span<const std::int16_t> samples)
{
    compact();
    m_samples.insert(m_samples.end(), samples.begin(), samples.end());
}

void SampleQueue::pushSilence(std::size_t count)
{
    compact();
    m_samples.resize(m_samples.size() + count);
}

std::int16_t SampleQueue::pop()
{
    return m_samples[m_head++];
}

void SampleQueue::drop(std::size_t count)
{
    m_head += std::min(count, size());
}

void SampleQueue::compact()
{
    m_samples.erase(m_samples.begin(), m_samples.begin() + static_cast<std::ptrdiff_t>(m_head));
    m_head = 0;
}

void StreamMixer::push(Input input, std::span<const std::int16_t> samples, std::vector<std::int16_t>& mixed)
{
    if (samples.empty())
        return;
    if (input == Input::master)
        pushMaster(samples);
    else
        pushSecond(samples);
    steer(samples.size());
    produce(mixed);
}

void StreamMixer::end(Input input, std::vector<std::int16_t>& mixed)
{
    (input == Input::master ? m_masterEnded : m_secondEnded) = true;
    produce(mixed);
}

void StreamMixer::finish(std::vector<std::int16_t>& mixed)
{
    m_masterEnded = true;
    m_secondEnded = true;
    produce(mixed);
}

void StreamMixer::pushMaster(std::span<const std::int16_t> samples)
{
    if (!m_masterFlows) {
        // What arrives last in both streams was captured at the same moment. If the second stream was first, it has no
        // microphone beside it until this piece.
        const auto master = m_master.size() + samples.size();
        if (secondFill() > master)
            m_master.pushSilence(secondFill() - master);
        else if (!m_second.empty())
            skip(static_cast<std::ptrdiff_t>(secondFill()) - static_cast<std::ptrdiff_t>(master));
        m_error = 0;
    }
    m_masterFlows = true;
    m_carrying = false;
    m_withoutMaster = 0;
    m_master.push(samples);
}

void StreamMixer::pushSecond(std::span<const std::int16_t> samples)
{
    if (!m_aligned)
        m_second.drop(m_second.size());
    m_second.push(samples);
    m_withoutMaster += samples.size();
    if (!m_aligned)
        alignSecond();
    if (m_withoutMaster > kMasterPatience) {
        m_carrying = true;
        m_masterFlows = false;
    }
}

void StreamMixer::alignSecond()
{
    m_aligned = true;
    m_silence = 0;
    m_phase = 0;
    m_previous = 0;
    m_error = 0;
    m_gain = 0;
    if (m_masterFlows && !m_masterEnded)
        skip(static_cast<std::ptrdiff_t>(m_second.size()) - static_cast<std::ptrdiff_t>(m_master.size()));
}

void StreamMixer::skip(std::ptrdiff_t samples)
{
    if (samples < 0) {
        m_silence += static_cast<std::size_t>(-samples);
        return;
    }
    const auto fromSilence = std::min(m_silence, static_cast<std::size_t>(samples));
    m_silence -= fromSilence;
    m_second.drop(static_cast<std::size_t>(samples) - fromSilence);
}

void StreamMixer::steer(std::size_t arrived)
{
    const bool masterStalls = !m_masterFlows || m_withoutMaster > kStall;
    if (masterStalls || m_masterEnded || m_secondEnded || !m_aligned) {
        m_rate = 1;
        return;
    }
    // Right after one stream's piece the other's is on its way: measured after the pieces of both, this cancels out
    // except for half a piece.
    const auto error = static_cast<double>(secondFill()) - static_cast<double>(m_master.size());
    const auto count = static_cast<double>(arrived);
    m_error += (error - m_error) * count / (count + kSmoothing);
    if (std::abs(m_error) > kMaxError) {
        breakOff();
        skip(std::lround(m_error));
        m_error = 0;
    }
    m_rate = 1 + std::clamp(m_error * kRatePerSample, -kMaxRateChange, kMaxRateChange);
}

std::size_t StreamMixer::ready()
{
    const auto second = secondFill();
    if (m_masterEnded && m_secondEnded)
        return std::max(m_master.size(), second);
    if (m_secondEnded)
        return m_master.size();
    if (m_masterEnded)
        return second - std::min(second, kLookAhead);
    const auto leading = m_carrying ? second : m_master.size();
    return leading - std::min(leading, kHeldBack);
}

void StreamMixer::produce(std::vector<std::int16_t>& mixed)
{
    for (auto count = ready(); count > 0; --count) {
        const auto second = nextSecond();
        const auto master = m_master.empty() ? std::int16_t{0} : m_master.pop();
        mixed.push_back(saturated(static_cast<float>(master) + second));
    }
}

void StreamMixer::breakOff()
{
    m_tail = m_last;
    m_gain = 0;
}

float StreamMixer::nextSecond()
{
    m_tail *= kFadeOut;
    if (m_silence > 0) {
        --m_silence;
        m_last = m_tail;
        return m_last;
    }
    const std::size_t needed = m_secondEnded ? 1 : kLookAhead;
    if (m_second.size() < needed) {
        if (m_aligned)
            breakOff();
        m_aligned = false;
        m_last = m_tail;
        return m_last;
    }
    const auto at = [this](std::size_t index) {
        return static_cast<float>(m_second[std::min(index, m_second.size() - 1)]);
    };
    m_last = m_tail + m_gain * interpolate(m_previous, at(0), at(1), at(2), static_cast<float>(m_phase));
    m_gain = std::min(1.0F, m_gain + kFadeIn);
    m_phase += m_rate;
    while (m_phase >= 1 && !m_second.empty()) {
        m_previous = m_second.pop();
        m_phase -= 1;
    }
    return m_last;
}

} // namespace vocalith
