#pragma once

#include "models/TranscriptionData.h"

#include <chrono>
#include <string>

namespace vocalith {

/// A time of a transcript as people read it.
using TranscriptTime = std::chrono::milliseconds;

/// Cut off, not rounded, to milliseconds. A time that is negative or not finite is 0.
TranscriptTime transcriptTime(double seconds);

/// "01:02:05,500"; more digits where the hours need them.
std::string srtTime(TranscriptTime time);
/// "01:02:05.500"
std::string webVttTime(TranscriptTime time);
/// "01:02:05"
std::string clockTime(TranscriptTime time);

/// The start of a segment in the transcript view, "62:05.500": its minutes go on beyond 59.
std::string startText(const TranscriptionData::Segment& segment);
/// The length of a segment in the transcript view: "9.5s", and without the decimal from 10 seconds on.
std::string lengthText(const TranscriptionData::Segment& segment);

} // namespace vocalith
