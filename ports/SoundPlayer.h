#pragma once

#include "base/Observable.h"
#include "base/Result.h"

#include <string>

namespace vocalith {

/// Plays the short sounds that tell a user without eyes on the screen what a dictation does. Main thread; playing never
/// blocks.
class SoundPlayer {
public:
    enum class Sound { recordingStarted, recordingEnded };

    virtual ~SoundPlayer() = default;

    /// Starts the sound in place of one that still plays; an error says why it cannot be heard.
    virtual Result<void, std::string> play(Sound sound) = 0;
    /// Ends whatever plays, without a sound.
    virtual void stop() = 0;

    /// What was started has been played to its end, or could not be: then it says why. Not told of what was stopped.
    Signal<Result<void, std::string>> finished;
};

} // namespace vocalith
