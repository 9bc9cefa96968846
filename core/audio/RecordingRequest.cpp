#include "core/audio/RecordingRequest.h"

namespace vocalith {

std::string fileName(const RecordingRequest& request)
{
    const char* prefix = "";
    if (request.forKeyboardExtension)
        prefix = "Vocalith-KeyboardExtension-";
    else if (request.streaming)
        prefix = "Vocalith-Stream-";
    else if (request.mode == RecordingMode::systemAudio)
        prefix = "Vocalith-SystemAudio-";
    return prefix + request.id.toString() + ".wav";
}

} // namespace vocalith
