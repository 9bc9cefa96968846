#pragma once

#include "base/JsonFields.h"
#include "base/Uuid.h"
#include "models/TranscriptionModelID.h"

#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// A transcript: the text in time order, with the model that produced it.
struct TranscriptionData {
    struct Segment {
        Uuid id;
        std::string text;
        double start = 0; ///< seconds from the beginning of the audio
        double end = 0;   ///< seconds from the beginning of the audio
        std::optional<std::string> speakerId;

        bool operator==(const Segment&) const = default;
    };

    TranscriptionModelID modelId;
    std::vector<Segment> segments;

    bool operator==(const TranscriptionData&) const = default;
};

constexpr auto jsonFields(JsonType<TranscriptionData::Segment>)
{
    using Segment = TranscriptionData::Segment;
    return fields(field("id", &Segment::id), field("text", &Segment::text), field("start", &Segment::start),
                  field("end", &Segment::end), field("speakerId", &Segment::speakerId));
}

constexpr auto jsonFields(JsonType<TranscriptionData>)
{
    return fields(field("modelId", &TranscriptionData::modelId), field("segments", &TranscriptionData::segments));
}

/// The trimmed texts of the segments, joined with one space.
std::string plainText(const TranscriptionData& transcript);

} // namespace vocalith
