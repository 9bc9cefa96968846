#include "core/audio/RecordingSink.h"

#include <fmt/format.h>

#include <utility>

namespace vocalith {

namespace {

const char* nameOf(AudioSource source)
{
    return source == AudioSource::microphone ? "microphone" : "system audio";
}

/// What the user reads after "The audio could not be recorded: ".
std::string reasonOf(const WavError& error)
{
    switch (error.kind) {
    case WavError::Kind::diskFull: return "the disk is full. What was recorded until then is kept.";
    case WavError::Kind::tooLarge:
        return "the recording has reached the largest size of its file. What was recorded until then is kept.";
    case WavError::Kind::notFound:
    case WavError::Kind::notWav:
    case WavError::Kind::failed:
        return "the file cannot be written (" + error.detail + "). What was recorded until then is kept.";
    }
    return error.detail;
}

} // namespace

void RecordingSink::Channel::samplesArrived(std::span<const std::int16_t> samples)
{
    const std::lock_guard lock(m_sink.m_mutex);
    if (!m_sink.m_mixes) {
        m_sink.write(samples);
        return;
    }
    m_sink.m_mixed.clear();
    m_sink.m_mixer.push(inputOf(m_source), samples, m_sink.m_mixed);
    m_sink.write(m_sink.m_mixed);
}

void RecordingSink::Channel::streamEnded(Result<void, AudioInputError> reason)
{
    const std::lock_guard lock(m_sink.m_mutex);
    if (reason) {
        m_sink.m_logger.info(fmt::format("The {} is at its end", nameOf(m_source)));
    } else {
        m_sink.m_logger.warning(fmt::format("Lost the {}: {}", nameOf(m_source), reason.error().detail));
        if (!m_sink.m_interruption)
            m_sink.m_interruption = reason.error();
    }
    if (m_sink.m_mixes) {
        m_sink.m_mixed.clear();
        m_sink.m_mixer.end(inputOf(m_source), m_sink.m_mixed);
        m_sink.write(m_sink.m_mixed);
    }
    if (--m_sink.m_runningStreams == 0)
        m_sink.tellEnded();
}

RecordingSink::RecordingSink(WavWriter writer, RecordingMode mode, EndHandler ended, Logger logger)
    : m_mixes(mode == RecordingMode::both), m_ended(std::move(ended)), m_logger(std::move(logger)),
      m_writer(std::move(writer)), m_runningStreams(m_mixes ? 2 : 1)
{}

AudioInputListener& RecordingSink::listener(AudioSource source)
{
    return source == AudioSource::microphone ? m_microphone : m_systemAudio;
}

StreamMixer::Input RecordingSink::inputOf(AudioSource source)
{
    return source == AudioSource::microphone ? StreamMixer::Input::master : StreamMixer::Input::second;
}

void RecordingSink::write(std::span<const std::int16_t> samples)
{
    if (samples.empty() || m_writeError)
        return;
    const auto before = m_writer.dataBytes();
    const auto appended = m_writer.append(samples);
    m_dataBytes = m_writer.dataBytes();
    const auto written = samples.first((m_writer.dataBytes() - before) / sizeof(std::int16_t));
    m_probe.scan(written);
    {
        const std::lock_guard lock(m_powerMutex);
        m_power.add(written);
    }
    if (!appended)
        writeFailed(appended.error());
}

void RecordingSink::writeFailed(const WavError& error)
{
    m_logger.error("Cannot write the recording: " + error.detail);
    m_writeError = error;
    if (!m_interruption)
        m_interruption = AudioInputError{AudioInputError::Kind::failed, reasonOf(error)};
    tellEnded();
}

void RecordingSink::tellEnded()
{
    if (std::exchange(m_toldEnded, true))
        return;
    if (m_interruption)
        m_ended(failure(*m_interruption));
    else
        m_ended({});
}

PowerWindow RecordingSink::takePower()
{
    const std::lock_guard lock(m_powerMutex);
    return std::exchange(m_power, {});
}

RecordingSink::Recorded RecordingSink::finish()
{
    const std::lock_guard lock(m_mutex);
    m_toldEnded = true; // whoever finishes the recording needs no telling
    m_mixed.clear();
    m_mixer.finish(m_mixed);
    write(m_mixed);
    m_logger.info("Silence probe: " + m_probe.summary());
    return {m_writer.dataBytes(), m_interruption, m_writeError};
}

} // namespace vocalith
