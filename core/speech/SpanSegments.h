#pragma once

#include "models/TranscriptionData.h"
#include "ports/SpeechRecognizer.h"

#include <vector>

namespace vocalith {

/// Joins recognised words to segments: a new one begins after a pause of more than 0.6 s and where a segment would last
/// longer than 12 s. A segment lasts from the beginning of its first word to the end of its last one, `offset` seconds
/// later than the spans say.
std::vector<TranscriptionData::Segment> segmentsOf(const std::vector<RecognizedSpan>& spans, double offset);

} // namespace vocalith
