#pragma once

#include "models/AudioFile.h"
#include "models/TranscriptionData.h"

#include <string>
#include <variant>

namespace vocalith {

enum class MediaFileType { audio, video };

/// The transcription of a file that the user chose.
struct FileTranscriptionProject {
    struct Idle {
        bool operator==(const Idle&) const = default;
    };
    struct ExtractingAudio {
        double progress = 0; ///< 0..1
        bool operator==(const ExtractingAudio&) const = default;
    };
    struct Transcribing {
        double progress = 0; ///< 0..1
        bool operator==(const Transcribing&) const = default;
    };
    struct Completed {
        TranscriptionData transcript;
        bool operator==(const Completed&) const = default;
    };
    struct Failed {
        std::string message; ///< as shown to the user
        bool operator==(const Failed&) const = default;
    };
    using TranscriptionState = std::variant<Idle, ExtractingAudio, Transcribing, Completed, Failed>;

    Uuid id;
    AudioFile audioFile; ///< for a video, the audio extracted from it
    MediaFileType originalFileType = MediaFileType::audio;
    TranscriptionState state;

    bool operator==(const FileTranscriptionProject&) const = default;
};

constexpr auto jsonFields(JsonType<FileTranscriptionProject::ExtractingAudio>)
{
    return fields(field("progress", &FileTranscriptionProject::ExtractingAudio::progress));
}

constexpr auto jsonFields(JsonType<FileTranscriptionProject::Transcribing>)
{
    return fields(field("progress", &FileTranscriptionProject::Transcribing::progress));
}

constexpr auto jsonFields(JsonType<FileTranscriptionProject::Completed>)
{
    return fields(field("_0", &FileTranscriptionProject::Completed::transcript));
}

constexpr auto jsonFields(JsonType<FileTranscriptionProject::Failed>)
{
    return fields(field("_0", &FileTranscriptionProject::Failed::message));
}

constexpr auto jsonUnion(JsonType<FileTranscriptionProject::TranscriptionState>)
{
    return taggedUnion(labelled("idle"), labelled("extractingAudio"), labelled("transcribing"), labelled("completed"),
                       labelled("failed"));
}

constexpr auto jsonFields(JsonType<FileTranscriptionProject>)
{
    return fields(field("id", &FileTranscriptionProject::id), field("audioFile", &FileTranscriptionProject::audioFile),
                  field("originalFileType", &FileTranscriptionProject::originalFileType),
                  field("state", &FileTranscriptionProject::state));
}

/// A project as older versions stored it; see LegacyProject.h.
Result<FileTranscriptionProject, JsonError> readLegacyProject(const Json& older);

constexpr JsonOlderForm<FileTranscriptionProject> jsonOlderForm(JsonType<FileTranscriptionProject>)
{
    return {"bookmark", "audioFile", &readLegacyProject};
}

} // namespace vocalith
