#pragma once

#include "base/Log.h"
#include "core/audio/AudioLevelMeter.h"
#include "core/audio/SilenceProbe.h"
#include "core/audio/StreamMixer.h"
#include "core/audio/WavFile.h"
#include "models/RecordingMode.h"
#include "ports/AudioInput.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace vocalith {

/// Where the captured samples of one recording go: mixed when there are two streams, into the file, past the level
/// meter. Owned by the AudioRecordingManager; its listeners are called on the threads of the streams, which must be
/// destroyed before it is.
class RecordingSink {
public:
    /// Called once, on a stream's thread, when no stream gives samples any more or none can be written: with the first
    /// thing that went wrong, or without an error.
    using EndHandler = std::function<void(Result<void, AudioInputError>)>;

    struct Recorded {
        std::uint64_t dataBytes = 0;
        std::optional<AudioInputError> interruption; ///< the first stream or write failure
        std::optional<WavError> writeError;
    };

    RecordingSink(WavWriter writer, RecordingMode mode, EndHandler ended, Logger logger);
    RecordingSink(const RecordingSink&) = delete;
    RecordingSink& operator=(const RecordingSink&) = delete;

    AudioInputListener& listener(AudioSource source);

    /// The audio bytes in the file by now. Any thread; it never waits for a write.
    std::uint64_t dataBytes() const { return m_dataBytes; }
    /// The power since the last call. Any thread; it never waits for a write.
    PowerWindow takePower();

    /// Writes what the mixer still holds back. Only after the streams were destroyed.
    Recorded finish();

private:
    class Channel final : public AudioInputListener {
    public:
        Channel(RecordingSink& sink, AudioSource source) : m_sink(sink), m_source(source) {}
        void samplesArrived(std::span<const std::int16_t> samples) override;
        void streamEnded(Result<void, AudioInputError> reason) override;

    private:
        RecordingSink& m_sink;
        AudioSource m_source;
    };

    static StreamMixer::Input inputOf(AudioSource source);
    void write(std::span<const std::int16_t> samples);
    void writeFailed(const WavError& error);
    void tellEnded();

    Channel m_microphone{*this, AudioSource::microphone};
    Channel m_systemAudio{*this, AudioSource::systemAudio};
    const bool m_mixes;
    const EndHandler m_ended;
    const Logger m_logger;

    std::mutex m_mutex; // everything up to the next lock; held while the file is written
    WavWriter m_writer;
    StreamMixer m_mixer;
    SilenceProbe m_probe;
    std::vector<std::int16_t> m_mixed;
    int m_runningStreams;
    bool m_toldEnded = false;
    std::optional<AudioInputError> m_interruption;
    std::optional<WavError> m_writeError;

    std::mutex m_powerMutex; // held for additions only, so that the main thread never waits for the disk
    PowerWindow m_power;
    std::atomic<std::uint64_t> m_dataBytes = 0;
};

} // namespace vocalith
