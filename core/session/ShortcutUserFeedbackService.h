#pragma once

#include "base/Log.h"

namespace vocalith {

class PersistentAppStorage;
class SoundPlayer;
class SystemVolume;

/// Lets the user hear that a recording has ended. Lives as long as the program; main thread.
class ShortcutUserFeedbackService {
public:
    ShortcutUserFeedbackService(SoundPlayer& audioPlayer, SystemVolume& systemVolumeManager,
                                const PersistentAppStorage& appStorage, Logger logger);

    /// A recording runs: the next end gives the volume back.
    void recordingStarted() { m_canEnd = true; }
    /// A recording that was long enough ends with a sound, any other one silently.
    void recordingEnded(bool longEnough);

private:
    SoundPlayer& m_audioPlayer;
    SystemVolume& m_systemVolumeManager;
    const PersistentAppStorage& m_appStorage;
    const Logger m_logger;
    bool m_canEnd = false;
};

} // namespace vocalith
