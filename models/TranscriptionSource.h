#pragma once

namespace vocalith {

/// Where the audio of a recognition came from.
enum class TranscriptionSource { file, dictation };

} // namespace vocalith
