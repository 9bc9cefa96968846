#pragma once

#include "app/ui/start/FirstStartModel.h"
#include "base/TaskScope.h"
#include "core/audio/AudioLevelMeter.h"
#include "ports/AudioInput.h"

#include <memory>

namespace vocalith {

/// Listens to the default microphone for the window of the first start, and keeps nothing of it. A microphone that is
/// not there is looked for again. Main thread.
class MicrophoneMeter {
public:
    MicrophoneMeter(AudioInput& input, Clock& clock);
    ~MicrophoneMeter();

    MicrophoneCheck& check() { return m_check; }
    /// To be awaited before destruction.
    Task<void> shutDown();

private:
    class Listener;

    Task<void> listen();
    void stop();
    void read();
    void fail(const AudioInputError& error);

    AudioInput& m_input;
    Clock& m_clock;
    MicrophoneCheck m_check;
    AudioLevelMeter m_meter;
    std::unique_ptr<Listener> m_listener;
    std::unique_ptr<AudioInputStream> m_stream;
    bool m_isWanted = false;
    Timer m_timer;
    TaskScope m_opening;
};

} // namespace vocalith
