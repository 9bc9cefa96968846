#pragma once

#include "base/Uuid.h"
#include "models/RecordingMode.h"

#include <string>

namespace vocalith {

/// What is to be recorded.
struct RecordingRequest {
    Uuid id; ///< of the dictation; names the file
    RecordingMode mode = RecordingMode::microphone;
    bool streaming = false;            ///< a streaming engine reads the recording while it grows
    std::string deviceId{};            ///< the microphone; empty follows the default
    bool forKeyboardExtension = false; ///< made on behalf of the companion keyboard
};

/// The name of the recording's file, which begins with its purpose.
std::string fileName(const RecordingRequest& request);

} // namespace vocalith
