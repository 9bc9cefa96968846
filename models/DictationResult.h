#pragma once

#include "models/AudioFile.h"
#include "models/TranscriptionData.h"

namespace vocalith {

/// The result of one successful dictation.
struct DictationResult {
    Uuid id; ///< identity of the dictation; also names its audio file
    AudioFile audioFile;
    TranscriptionData transcriptionData; ///< as recognised, before any AI transform

    bool operator==(const DictationResult&) const = default;
};

constexpr auto jsonFields(JsonType<DictationResult>)
{
    return fields(field("id", &DictationResult::id), field("audioFile", &DictationResult::audioFile),
                  field("transcriptionData", &DictationResult::transcriptionData));
}

} // namespace vocalith
