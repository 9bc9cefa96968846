#include "models/LegacyProject.h"

#include "base/Json.h"

#include <type_traits>

namespace vocalith {
namespace {

/// The older form did not say which model a transcript came from.
constexpr const char* kUnknownModel = "unknown";

FileTranscriptionProject::TranscriptionState currentState(LegacyProject::State&& state)
{
    return std::visit(
        []<class T>(T payload) -> FileTranscriptionProject::TranscriptionState {
            if constexpr (std::is_same_v<T, LegacyProject::Completed>)
                return FileTranscriptionProject::Completed{
                    TranscriptionData{std::string(kUnknownModel), std::move(payload.transcript.segments)}};
            else
                return payload;
        },
        std::move(state));
}

} // namespace

Result<FileTranscriptionProject, JsonError> readLegacyProject(const Json& older)
{
    return fromJson<LegacyProject>(older).map([](LegacyProject&& legacy) {
        AudioFile file{std::move(legacy.bookmark), legacy.duration.value_or(0), legacy.sizeInBytes};
        return FileTranscriptionProject{legacy.id, std::move(file), legacy.fileType,
                                        currentState(std::move(legacy.state))};
    });
}

} // namespace vocalith
