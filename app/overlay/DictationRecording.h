#pragma once

#include "base/Date.h"
#include "base/Log.h"
#include "core/audio/AudioRecordingManager.h"
#include "core/session/DictationOutcome.h"

#include <optional>
#include <string>

namespace vocalith {

class HistoryService;

/// The recording of the running dictation once it was stopped, and what becomes of it: it is recognised, kept as an
/// entry of the history, or removed. Belongs to the coordination of dictations; main thread. A stop of the awaiting
/// task leaves the file where it is.
class DictationRecording {
public:
    /// A recording must be longer than `minimumDuration`, in seconds, to be worth anything.
    DictationRecording(AudioRecordingManager& recorder, HistoryService& history, double minimumDuration, Logger logger);

    /// A dictation begins, under whose identifier and date the history would keep its recording.
    void begin(Uuid sessionID, Date creationDate);
    /// The recording's input has ended by itself.
    void interrupted(AudioInputError error) { m_interruption = std::move(error); }
    /// Stops the recorder and takes its file; the error says why there is none. Of no effect once there is one.
    Task<Result<void, AudioRecordingFailure>> stop();

    /// There is a file; so from a successful `stop` until `remove` or `letGo`.
    bool exists() const { return m_file.has_value(); }
    bool isLongEnough() const;
    /// What cut the recording short, wholly or one of its sources.
    const std::optional<AudioInputError>& interruption() const { return m_interruption; }
    const AudioFile& audioFile() const { return m_file->audioFile; } ///< of one that exists
    double elapsedTime() const { return m_file->elapsedTime; }       ///< of one that exists, in seconds
    Date creationDate() const { return m_creationDate; }             ///< of the dictation

    /// The failure of a dictation that somebody ended, with this sentence: its words may have come as far as the
    /// history.
    Task<dictation_outcome::Failed> failureOf(std::string reason);
    /// Keeps what was recorded: in the history, or else as the file that it is. An entry that has the words already
    /// stays as it is. Yields the failure with where that was.
    Task<dictation_outcome::Failed> keep(dictation_outcome::Failed failed);
    /// Removes the file, if there is one.
    void remove();
    /// The dictation is over: whoever needs the file knows where it is.
    void letGo();

private:
    AudioRecordingManager& m_recorder;
    HistoryService& m_history;
    const double m_minimumDuration;
    const Logger m_logger;

    Uuid m_sessionID;
    Date m_creationDate;
    std::optional<FinishedRecording> m_file;
    std::optional<AudioInputError> m_interruption;
};

} // namespace vocalith
