#pragma once

#include "base/Result.h"
#include "base/Task.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vocalith {

/// The one form in which captured audio exists: 16-bit signed mono samples in native byte order at this rate, in Hz.
inline constexpr int kAudioSampleRate = 16000;

/// What one stream captures.
enum class AudioSource {
    microphone, ///< a source that is no monitor
    systemAudio ///< what the machine plays: the monitor of the default sink
};

struct AudioDevice {
    std::string id;   ///< the server's own name of the device, stable across restarts
    std::string name; ///< for people
    bool isDefault = false;
    bool operator==(const AudioDevice&) const = default;
};

struct AudioInputRequest {
    AudioSource source = AudioSource::microphone;
    /// The microphone to capture; empty follows the default, also when the default changes while the stream runs.
    /// System audio always follows the default sink and takes no id: `unsupported`.
    std::string deviceId;
    bool operator==(const AudioInputRequest&) const = default;
};

struct AudioInputError {
    enum class Kind {
        noServer,         ///< no audio server answers
        permissionDenied, ///< the server refuses this client
        noDevice,         ///< the asked device, or any device at all, is not there
        deviceLost,       ///< the device went away in the middle
        serverLost,       ///< the server went away in the middle, or gives no data any more
        unsupported,      ///< this input cannot capture that source
        sourceUnreadable, ///< the source is a file that gives no sound; `detail` is the sentence for the user
        failed            ///< anything else; `detail` says what
    };
    Kind kind = Kind::failed;
    std::string detail; ///< for the log
    bool operator==(const AudioInputError&) const = default;
};

/// The sentence that is shown to the user: what is wrong and what to do about it.
std::string userMessage(const AudioInputError& error);

/// Receives one stream. Both calls come from the stream's own thread, one at a time, and never after the stream was
/// destroyed. They must be quick: the stream's thread waits for them, and other streams may share it.
///
/// Sample n lies n / kAudioSampleRate seconds after the stream's start: time for which the server gives nothing,
/// because the default changes or an idle device wakes up late, arrives as silence.
class AudioInputListener {
public:
    virtual ~AudioInputListener() = default;

    virtual void samplesArrived(std::span<const std::int16_t> samples) = 0;
    /// The stream is over by itself and gives no more samples: a finite source is at its end (no error), or it was
    /// lost. What arrived before is good. Called at most once; the stream still has to be destroyed.
    virtual void streamEnded(Result<void, AudioInputError> reason) = 0;
};

/// A running capture; destroying it ends it (main thread, never from within a listener's call). That waits for a
/// listener's call that is under way, and for nothing else.
class AudioInputStream {
public:
    virtual ~AudioInputStream() = default;
};

/// The machine's microphones and what it plays. Main thread; it outlives its streams and its tasks.
class AudioInput {
public:
    virtual ~AudioInput() = default;

    /// The microphones (monitors left out), the default first.
    virtual Task<Result<std::vector<AudioDevice>, AudioInputError>> microphones() = 0;

    /// Starts a capture; yields the stream once the server has accepted it. Samples, and even the end, may arrive
    /// before the caller is resumed. `listener` outlives the stream. A request that is cancelled yields an error of
    /// kind `failed` and no stream; with any error, the listener is not called any more once the task has ended.
    virtual Task<Result<std::unique_ptr<AudioInputStream>, AudioInputError>> open(AudioInputRequest request,
                                                                                  AudioInputListener& listener) = 0;
};

} // namespace vocalith
