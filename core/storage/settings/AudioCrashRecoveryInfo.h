#pragma once

#include "base/JsonFields.h"

#include <cstdint>
#include <string>

namespace vocalith {

/// The recording in progress: what is needed to save its audio when the program ends in the middle of it.
struct AudioCrashRecoveryInfo {
    std::string recordingFilePath;
    std::int64_t startByte = 0; ///< where the recording's audio begins in that file

    bool operator==(const AudioCrashRecoveryInfo&) const = default;
};

constexpr auto jsonFields(JsonType<AudioCrashRecoveryInfo>)
{
    return fields(field("recordingFilePath", &AudioCrashRecoveryInfo::recordingFilePath),
                  field("startByte", &AudioCrashRecoveryInfo::startByte));
}

} // namespace vocalith
