#pragma once

#include "base/Log.h"
#include "base/Result.h"
#include "base/Uuid.h"
#include "core/storage/settings/AudioCrashRecoveryInfo.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace vocalith {

enum class RecordingRecoveryFailure {
    stillRecording, ///< another process is recording into the file: it was left alone
    fileMissing,    ///< the file is gone: there is nothing to recover
    empty,          ///< nothing had been captured: the file was removed
    diskFull,       ///< no room for the recovered file; the abandoned one was kept
    failed,         ///< reading or writing failed; the abandoned file was kept
    cancelled
};

/// The sentence that is shown to the user.
std::string userMessage(RecordingRecoveryFailure failure);

struct RecoveredFile {
    Uuid id; ///< of the abandoned recording
    std::filesystem::path path;
    double duration = 0;    ///< seconds
    std::uint64_t size = 0; ///< bytes
};

/// The identity of the recording, which is the end of its file's name; nothing for a name without one.
std::optional<Uuid> recordingID(const std::filesystem::path& file);

/// Saves the audio that an abnormal end of the program left behind, from `info.startByte` on and never with header
/// bytes in it, as "VocalithRecovered-<ID>.wav" in `folder`. The abandoned file need not have a valid header. It is
/// removed once the new one is safely on the disk, so a crash in the middle costs nothing. Where an earlier call has
/// done all that, yields what it had saved. Blocks; any thread.
Result<RecoveredFile, RecordingRecoveryFailure>
recoverRecording(const AudioCrashRecoveryInfo& info, const std::filesystem::path& folder, const Logger& logger);

} // namespace vocalith
