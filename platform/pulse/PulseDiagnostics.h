#pragma once

#include "base/Log.h"
#include "platform/pulse/PulseTimes.h"
#include "ports/Diagnostics.h"

#include <memory>

namespace vocalith {

class PulseServer;

/// Says whether this machine can record: the audio server, the default microphone, and what is played. The composition
/// owns it.
class PulseDiagnostics final : public Diagnostics {
public:
    explicit PulseDiagnostics(Logger logger);
    /// `server` is a server's address as in PULSE_SERVER; empty means the session's own.
    PulseDiagnostics(Logger logger, std::string server, PulseTimes times);
    ~PulseDiagnostics() override;

    Task<std::vector<Finding>> examine() override;

private:
    std::unique_ptr<PulseServer> m_server;
};

} // namespace vocalith
