#pragma once

#include "ports/AudioInput.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace vocalith {

/// Why there is no recording, or nothing of it.
struct AudioRecordingFailure {
    enum class Kind {
        recorderNotCreated,     ///< the folder or the file cannot be made
        fileMissing,            ///< the file was removed during the recording
        noFile,                 ///< nothing is being recorded
        emptyFile,              ///< nothing was captured
        noStreamingFile,        ///< there is no file for a streaming reader
        systemAudioUnsupported, ///< this machine's audio cannot be captured
        alreadyRecording,
        diskFull,
        cancelled,
        input ///< the audio input failed; `input` says how
    };
    Kind kind = Kind::recorderNotCreated;
    std::optional<AudioInputError> input = std::nullopt; ///< with kind `input`
    bool operator==(const AudioRecordingFailure&) const = default;
};

/// What it means for the recording that its source cannot be opened.
AudioRecordingFailure failureOf(const AudioInputError& error, AudioSource source);

/// The sentence that is shown to the user.
std::string userMessage(const AudioRecordingFailure& error);

/// Why a streaming reader gets no audio although there is a file.
struct AudioRecordingError {
    enum class Kind { noNewAudioDataAvailable };
    Kind kind = Kind::noNewAudioDataAvailable;
    std::uint64_t size = 0; ///< of the file now, in bytes
    bool operator==(const AudioRecordingError&) const = default;
};

using AudioReadError = std::variant<AudioRecordingError, AudioRecordingFailure>;

/// For the log of the reader.
std::string userMessage(const AudioReadError& error);

} // namespace vocalith
