#include "ports/AudioPlayer.h"

namespace vocalith {

std::string userMessage(const AudioPlayerError& error)
{
    using Kind = AudioPlayerError::Kind;
    switch (error.kind) {
    case Kind::noServer:
        return "No audio server is running. Start PipeWire or PulseAudio (systemctl --user start pipewire-pulse) and "
               "try again.";
    case Kind::permissionDenied:
        return "The audio server refuses to play for this application. Allow it to use sound and try again.";
    case Kind::noDevice: return "There is nothing to play on. Connect loudspeakers or headphones and try again.";
    case Kind::serverLost: return "The audio server has stopped playing.";
    case Kind::sourceUnreadable: return error.detail;
    case Kind::failed: return "The recording could not be played: " + error.detail;
    case Kind::cancelled: return "Cancelled";
    }
    return {};
}

} // namespace vocalith
