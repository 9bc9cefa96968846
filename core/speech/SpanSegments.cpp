#include "core/speech/SpanSegments.h"

namespace vocalith {
namespace {

constexpr double kPause = 0.6;
constexpr double kLongestSegment = 12;

} // namespace

std::vector<TranscriptionData::Segment> segmentsOf(const std::vector<RecognizedSpan>& spans, double offset)
{
    std::vector<TranscriptionData::Segment> segments;
    for (const auto& span : spans) {
        const double start = span.start + offset;
        const double end = span.end + offset;
        const bool goesOn = !segments.empty() && start - segments.back().end <= kPause &&
                            end - segments.back().start <= kLongestSegment;
        if (goesOn) {
            segments.back().text += ' ' + span.text;
            segments.back().end = end;
        } else {
            segments.push_back({Uuid::random(), span.text, start, end, std::nullopt});
        }
    }
    return segments;
}

} // namespace vocalith
