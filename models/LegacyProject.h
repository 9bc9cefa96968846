#pragma once

#include "models/FileTranscriptionProject.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vocalith {

/// What older versions stored in place of a `FileTranscriptionProject`. Only read.
struct LegacyProject {
    struct Transcript {
        std::vector<TranscriptionData::Segment> segments;
    };
    struct Completed {
        Transcript transcript;
    };
    using State = std::variant<FileTranscriptionProject::Idle, FileTranscriptionProject::ExtractingAudio,
                               FileTranscriptionProject::Transcribing, Completed, FileTranscriptionProject::Failed>;

    Uuid id;
    FileBookmark bookmark;
    std::string name;
    std::optional<double> duration; ///< seconds
    std::int64_t sizeInBytes = 0;
    MediaFileType fileType = MediaFileType::audio;
    State state;
};

constexpr auto jsonFields(JsonType<LegacyProject::Transcript>)
{
    return fields(field("segments", &LegacyProject::Transcript::segments));
}

constexpr auto jsonFields(JsonType<LegacyProject::Completed>)
{
    return fields(field("_0", &LegacyProject::Completed::transcript));
}

constexpr auto jsonUnion(JsonType<LegacyProject::State>)
{
    return jsonUnion(JsonType<FileTranscriptionProject::TranscriptionState>{});
}

constexpr auto jsonFields(JsonType<LegacyProject>)
{
    return fields(field("id", &LegacyProject::id), field("bookmark", &LegacyProject::bookmark),
                  field("name", &LegacyProject::name), field("duration", &LegacyProject::duration),
                  field("sizeInBytes", &LegacyProject::sizeInBytes), field("fileType", &LegacyProject::fileType),
                  field("state", &LegacyProject::state));
}

} // namespace vocalith
