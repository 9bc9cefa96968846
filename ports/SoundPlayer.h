#pragma once

#include "base/Result.h"

#include <string>

namespace vocalith {

/// Plays the short sounds that tell a user without eyes on the screen what a dictation does. Main thread; playing never
/// blocks.
class SoundPlayer {
public:
    enum class Sound { recordingEnded };

    virtual ~SoundPlayer() = default;

    /// Starts the sound; an error says why it cannot be heard.
    virtual Result<void, std::string> play(Sound sound) = 0;
    /// Ends whatever plays, without a sound.
    virtual void stop() = 0;
};

} // namespace vocalith
