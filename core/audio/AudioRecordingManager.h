#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "base/Observable.h"
#include "base/OneShot.h"
#include "base/Task.h"
#include "base/Uuid.h"
#include "base/Worker.h"
#include "core/audio/AudioLevelMeter.h"
#include "core/audio/AudioRecordingFailure.h"
#include "core/audio/RecordingReader.h"
#include "core/audio/RecordingRecovery.h"
#include "core/audio/RecordingRequest.h"
#include "core/storage/settings/AudioCrashRecoveryInfo.h"
#include "models/AudioFile.h"
#include "models/KeyboardCompanion.h"
#include "models/RecordingMode.h"
#include "ports/AudioInput.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vocalith {

class PersistentAppStorage;

/// A recording that was stopped. Its file belongs to whoever stopped it.
struct FinishedRecording {
    Uuid id;
    AudioFile audioFile;
    /// Seconds of audio that were captured: the samples in the file / 16000. Not the time that passed.
    double elapsedTime = 0;
    /// What cut the recording, or one of its two sources, short. What was recorded until then is in the file.
    std::optional<AudioInputError> interruption;
};

/// What an abnormal end of the program had left behind.
struct RecoveredRecording {
    Uuid id;
    AudioFile audioFile;
};

/// Records one dictation at a time into a file that is playable at every moment, publishes its level and length, and
/// lets a streaming engine read it while it grows. Made once by the composition; main thread. A `start` that is
/// cancelled leaves no file. Destroyed while it records, it leaves the file to be recovered at the next start of the
/// program.
class AudioRecordingManager {
public:
    /// `recordingsFolder` is made with the first recording.
    AudioRecordingManager(AudioInput& input, PersistentAppStorage& storage, Clock& clock,
                          std::filesystem::path recordingsFolder, Logger logger);
    AudioRecordingManager(const AudioRecordingManager&) = delete;
    AudioRecordingManager& operator=(const AudioRecordingManager&) = delete;
    ~AudioRecordingManager();

    /// Makes the file and opens the sources; yields once all of them run. The first sample that any of them captures is
    /// in the file.
    Task<Result<void, AudioRecordingFailure>> start(RecordingRequest request);
    /// Ends the recording and hands its file over. While the sources are being opened, it waits for them. Without audio
    /// there is no file any more. The recovery information stays until `settle`.
    Task<Result<FinishedRecording, AudioRecordingFailure>> stop();
    /// The audio of the recording that was stopped is needed no more, or its owner knows where it is: an abnormal end
    /// of the program from now on leaves nothing of it to recover. What an earlier program left, and could not be
    /// recovered before this recording, waits again for its turn.
    void settle();
    /// Ends the recording, if there is one, and removes its file. A `start` that still waits yields `cancelled`.
    Task<void> cancel();

    /// The input ended by itself: a finite source is at its end (no error), or the last source or the disk is lost.
    /// Told once a recording; the recording is then stopped with `stop()` as any other.
    Signal<Result<void, AudioInputError>> ended;

    Observable<KeyboardSessionState> keyboardExtensionSessionState{KeyboardSessionState::inactive};
    Observable<float> audioLevel{0};                                                                      ///< 0...1
    Observable<std::vector<float>> visualAudioLevels{std::vector<float>(AudioLevelMeter::kVisualLevels)}; ///< 0...1
    Observable<double> elapsedTime{0}; ///< seconds since the recording started, once a second
    Observable<RecordingMode> recordingMode{RecordingMode::microphone};

    /// The last meter readings of this recording in dB; see AudioLevelMeter.
    const std::deque<float>& rawAudioPowerLevels() const { return m_meter.rawAudioPowerLevels(); }
    /// From the beginning of `start` on.
    bool isRecording() const { return m_recording != nullptr; }

    /// The raw samples (16 kHz, mono, 16-bit little-endian; the file's header is not audio) from `lastProcessedBytes`
    /// to the current end, in pieces of at most `RecordingReader::kMaxBytes`. After `stop` of a streaming recording the
    /// rest can still be read, until the next `start` or `cancel`.
    Result<std::vector<std::uint8_t>, AudioReadError> readNewAudio();
    /// The offset in the file up to which `readNewAudio` has read.
    std::uint64_t lastProcessedBytes() const;
    /// The file that `readNewAudio` reads.
    const std::optional<std::filesystem::path>& streamingFileURL() const { return m_streamingFileURL; }
    /// The offset of the first audio byte of the last recording for the companion keyboard.
    std::uint64_t keyboardRecordingStartByte() const { return m_keyboardRecordingStartByte; }

    /// Saves what an abnormal end of the program left behind, as "VocalithRecovered-<ID>.wav". The stored recovery
    /// information stays until `forget`, so that an end of the program before its owner has noted the recording loses
    /// nothing: another call yields it again. It is cleared here when there is nothing to save.
    Task<Result<RecoveredRecording, RecordingRecoveryFailure>> recover(AudioCrashRecoveryInfo info);
    /// Whoever owns the recovered recording knows where it is: there is nothing to recover any more. Another recording
    /// may run meanwhile.
    void forget(const AudioCrashRecoveryInfo& info);

private:
    struct Recording;

    Result<void, AudioRecordingFailure> prepare(RecordingRequest request);
    Task<Result<void, AudioRecordingFailure>> openStreams();
    void endStarting();
    Task<void> untilStarted();
    std::unique_ptr<Recording> endRecording();
    Result<FinishedRecording, AudioRecordingFailure> handOver(const Recording& recording);
    void discard();
    void setStreamingFile(std::optional<std::filesystem::path> file);
    void clearStored();
    AudioFile audioFile(const std::filesystem::path& file, double duration, std::uint64_t size) const;

    std::function<void(Result<void, AudioInputError>)> endHandler();
    void inputEnded(const Result<void, AudioInputError>& reason);

    void startTimers();
    void stopTimers();
    void armMeteringTimer();
    void armRecordingTimer();
    void publishLevels();

    AudioInput& m_input;
    PersistentAppStorage& m_storage;
    Clock& m_clock;
    const std::filesystem::path m_folder;
    const Logger m_logger;

    std::unique_ptr<Recording> m_recording;
    std::optional<AudioCrashRecoveryInfo> m_recoveryInfo;        ///< of the recording, until it is settled
    std::optional<AudioCrashRecoveryInfo> m_earlierRecoveryInfo; ///< that was stored before it
    bool m_starting = false;
    bool m_cancelsStart = false;
    std::vector<OneShot<std::monostate>::Resolver> m_startWaiters;
    std::optional<Result<void, AudioInputError>> m_endWhileStarting;

    AudioLevelMeter m_meter;
    Timer m_meteringTimer;
    Timer m_recordingTimer;

    std::optional<std::filesystem::path> m_streamingFileURL;
    std::optional<RecordingReader> m_reader;
    std::uint64_t m_recordedBytes = 0; ///< of the streaming file's audio, once it was stopped
    std::uint64_t m_keyboardRecordingStartByte = 0;

    std::unique_ptr<Worker> m_recoveryWorker;
};

} // namespace vocalith
