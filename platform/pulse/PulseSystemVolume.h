#pragma once

#include "base/Log.h"
#include "platform/pulse/PulseTimes.h"
#include "ports/SystemVolume.h"

#include <filesystem>
#include <memory>
#include <string>

namespace vocalith {

class PulseMuting;
class PulseServer;

/// Silences the default output of PulseAudio or PipeWire. The volume itself is never touched, so that it is given back
/// exactly. The composition owns it; main thread. Destroyed while the output is silent it gives it back, for which it
/// waits a fifth of a second at most; what did not come back until then does at the next start.
class PulseSystemVolume final : public SystemVolume {
public:
    /// `noteFile` names the silenced output meanwhile: when it is there at the start, an earlier program was killed,
    /// and what it had silenced is given back.
    PulseSystemVolume(std::filesystem::path noteFile, Logger logger);
    /// `server` is a server's address as in PULSE_SERVER; empty means the session's own.
    PulseSystemVolume(std::filesystem::path noteFile, Logger logger, std::string server, PulseTimes times);
    ~PulseSystemVolume() override;

    void mute() override;
    void restore() override;

private:
    std::unique_ptr<PulseServer> m_server;
    const std::shared_ptr<PulseMuting> m_muting; ///< the loop's thread's
    bool m_hasMuted = false;
};

} // namespace vocalith
