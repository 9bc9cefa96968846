#pragma once

#include "base/Log.h"
#include "base/Task.h"
#include "core/audio/RecordingRecovery.h"
#include "models/AudioFile.h"

#include <filesystem>
#include <optional>

namespace vocalith {

class AudioRecordingManager;
class HistoryService;
class PersistentAppStorage;

/// A dictation that was cut off by the end of the program, and where it is now.
struct InterruptedDictation {
    std::filesystem::path recording;
    double duration = 0;           ///< of the recording, in seconds; 0 while it could not be saved
    std::optional<Uuid> entryID{}; ///< of its entry in the history
    bool hasText = false;          ///< it came far enough for the entry to have its words
    /// Why the recording could not be saved; it is still as it was left.
    std::optional<RecordingRecoveryFailure> failure{};

    bool operator==(const InterruptedDictation&) const = default;
};

/// Takes care, at the next start of the program, of a dictation that was cut off: its audio becomes a failed entry of
/// the history, which can be transcribed again. However often it is itself cut off, nothing is lost and there is one
/// entry: what there is to recover is forgotten only once the entry is on the disk. Owned by the composition; main
/// thread. A stop leaves everything for the next time.
class InterruptedDictationRecovery {
public:
    InterruptedDictationRecovery(AudioRecordingManager& audioRecordingManager, PersistentAppStorage& appStorage,
                                 HistoryService& historyService)
        : m_audioRecordingManager(audioRecordingManager), m_appStorage(appStorage), m_historyService(historyService)
    {}

    /// Yields nothing when nothing was cut off. For whoever holds the lock of dictations.
    Task<std::optional<InterruptedDictation>> recover();
    /// The same for everybody else: while a dictation runs, which holds the lock of `lockFile`, it is left alone.
    Task<std::optional<InterruptedDictation>> recoverUnlessDictating(std::filesystem::path lockFile);

private:
    Task<std::optional<InterruptedDictation>> alreadyKept(std::filesystem::path recording);
    Task<std::optional<Uuid>> keep(Uuid id, AudioFile audioFile);

    AudioRecordingManager& m_audioRecordingManager;
    PersistentAppStorage& m_appStorage;
    HistoryService& m_historyService;
};

} // namespace vocalith
