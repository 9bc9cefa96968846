#include "core/audio/AudioRecordingFailure.h"

#include <fmt/format.h>

namespace vocalith {

AudioRecordingFailure failureOf(const AudioInputError& error, AudioSource source)
{
    using Kind = AudioRecordingFailure::Kind;
    if (source == AudioSource::systemAudio && error.kind == AudioInputError::Kind::unsupported)
        return {Kind::systemAudioUnsupported};
    return {Kind::input, error};
}

std::string userMessage(const AudioRecordingFailure& error)
{
    using Kind = AudioRecordingFailure::Kind;
    switch (error.kind) {
    case Kind::recorderNotCreated: return "Failed to create audio recorder";
    case Kind::fileMissing: return "Audio file does not exist.";
    case Kind::noFile: return "Audio URL was not specified.";
    case Kind::emptyFile: return "Empty audio file.";
    case Kind::noStreamingFile: return "No streaming file URL";
    case Kind::systemAudioUnsupported: return "System audio recording requires macOS 15.0 or newer";
    case Kind::alreadyRecording: return "A recording is already in progress.";
    case Kind::diskFull: return "The disk is full. Free some space and try again.";
    case Kind::cancelled: return "The recording was cancelled.";
    case Kind::input: return userMessage(error.input.value_or(AudioInputError{}));
    }
    return {};
}

std::string userMessage(const AudioReadError& error)
{
    if (const auto* failed = std::get_if<AudioRecordingFailure>(&error))
        return userMessage(*failed);
    return fmt::format("No new audio data available (size: {})", std::get<AudioRecordingError>(error).size);
}

} // namespace vocalith
