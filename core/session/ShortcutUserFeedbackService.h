#pragma once

#include "base/Log.h"
#include "base/Observable.h"
#include "base/Result.h"
#include "models/RecordingMode.h"

#include <string>

namespace vocalith {

class PersistentAppStorage;
class SoundPlayer;
class SystemVolume;

/// Lets the user hear that a recording has begun and ended, and silences the machine in between where the user wants
/// that. Lives as long as the program; main thread.
class ShortcutUserFeedbackService {
public:
    ShortcutUserFeedbackService(SoundPlayer& audioPlayer, SystemVolume& systemVolumeManager,
                                const PersistentAppStorage& appStorage, Logger logger);

    /// A recording runs: the next end gives the volume back. What the machine plays is silenced once the sound of the
    /// start has been heard, unless that is what is recorded.
    void recordingStarted(RecordingMode mode);
    /// A recording that was long enough ends with a sound, any other one silently.
    void recordingEnded(bool longEnough);

private:
    void muteIfDue();
    void onPlayFinish(const Result<void, std::string>& heard);

    SoundPlayer& m_audioPlayer;
    SystemVolume& m_systemVolumeManager;
    const PersistentAppStorage& m_appStorage;
    const Logger m_logger;
    bool m_canEnd = false;
    bool m_mutingIsDue = false;
    Subscription m_playFinish;
};

} // namespace vocalith
