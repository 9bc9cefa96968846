#pragma once

namespace vocalith {

/// Which audio a dictation records.
enum class RecordingMode { microphone, systemAudio, both };

} // namespace vocalith
