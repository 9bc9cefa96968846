#pragma once

#include "base/Log.h"
#include "platform/pulse/PulseTimes.h"
#include "ports/SoundPlayer.h"

#include <memory>

namespace vocalith {

class PulsePlayback;
class PulseServer;

/// Plays the short sounds on the default output of PulseAudio or PipeWire. The composition owns it; main thread. `play`
/// always begins: what goes wrong is told by `finished`.
class PulseSoundPlayer final : public SoundPlayer {
public:
    explicit PulseSoundPlayer(Logger logger);
    /// `server` is a server's address as in PULSE_SERVER; empty means the session's own.
    PulseSoundPlayer(Logger logger, std::string server, PulseTimes times);
    ~PulseSoundPlayer() override;

    Result<void, std::string> play(Sound sound) override;
    void stop() override;

private:
    std::unique_ptr<PulseServer> m_server;
    std::shared_ptr<PulsePlayback> m_playing;
    std::shared_ptr<bool> m_current; ///< lives as long as what plays may tell of its end
};

} // namespace vocalith
