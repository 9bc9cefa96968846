#pragma once

#include "base/Log.h"
#include "base/Worker.h"
#include "platform/pulse/PulseTimes.h"
#include "ports/AudioPlayer.h"

#include <memory>

namespace vocalith {

class PCMConverter;
class PulseServer;

/// Plays through the PulseAudio client library, on PulseAudio or PipeWire. The composition owns it; main thread. A
/// thread of its own decodes, a few seconds ahead.
class PulseAudioPlayer final : public AudioPlayer {
public:
    PulseAudioPlayer(const PCMConverter& converter, Logger logger);
    /// `server` is a server's address as in PULSE_SERVER; empty means the session's own.
    PulseAudioPlayer(const PCMConverter& converter, Logger logger, std::string server, PulseTimes times);
    ~PulseAudioPlayer() override;

    Task<Result<double, AudioPlayerError>> play(std::filesystem::path file, PositionHandler position) override;

private:
    const PCMConverter& m_converter;
    std::unique_ptr<PulseServer> m_server; // before the decoder, which wakes it up
    Worker m_decoder;
};

} // namespace vocalith
