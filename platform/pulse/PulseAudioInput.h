#pragma once

#include "base/Log.h"
#include "platform/pulse/PulseTimes.h"
#include "ports/AudioInput.h"

namespace vocalith {

class PulseServer;

/// Records through the PulseAudio client library, from PulseAudio or PipeWire. The composition owns it; it lives on the
/// main thread and never waits for the server there. It keeps a connection only while something records or asks: idle,
/// it has one thread that sleeps. All streams share that thread, and listeners are called on it.
class PulseAudioInput final : public AudioInput {
public:
    explicit PulseAudioInput(Logger logger);
    /// `server` is a server's address as in PULSE_SERVER; empty means the session's own.
    PulseAudioInput(Logger logger, std::string server, PulseTimes times);
    ~PulseAudioInput() override;

    Task<Result<std::vector<AudioDevice>, AudioInputError>> microphones() override;
    Task<Result<std::unique_ptr<AudioInputStream>, AudioInputError>> open(AudioInputRequest request,
                                                                          AudioInputListener& listener) override;

private:
    std::unique_ptr<PulseServer> m_server;
};

} // namespace vocalith
