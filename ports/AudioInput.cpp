#include "ports/AudioInput.h"

namespace vocalith {

std::string userMessage(const AudioInputError& error)
{
    using Kind = AudioInputError::Kind;
    switch (error.kind) {
    case Kind::noServer:
        return "No audio server is running. Start PipeWire or PulseAudio (systemctl --user start pipewire-pulse) and "
               "try "
               "again.";
    case Kind::permissionDenied:
        return "The audio server refuses access to the microphone. Allow microphone access for this application and "
               "try "
               "again.";
    case Kind::noDevice:
        return "There is nothing to record from" + (error.detail.empty() ? "" : ": " + error.detail) +
               ". Connect a microphone, or choose another; \"vocalith doctor\" lists them.";
    case Kind::deviceLost: return "The audio device was disconnected. What was recorded until then is kept.";
    case Kind::serverLost: return "The audio server stopped. What was recorded until then is kept.";
    case Kind::unsupported: return "This audio source cannot be recorded here.";
    case Kind::sourceUnreadable: return error.detail;
    case Kind::failed: return "The audio could not be recorded: " + error.detail;
    }
    return {};
}

} // namespace vocalith
