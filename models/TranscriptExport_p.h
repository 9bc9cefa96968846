#pragma once

#include "models/TranscriptExport.h"

namespace vocalith::detail {

/// The visible text: invalid UTF-8 becomes U+FFFD, control characters go, every line is trimmed, empty lines go, and
/// the others are joined with `lineBreak`.
std::string cleanText(std::string_view text, char lineBreak);

/// The clean name of the segment's speaker, empty when it has none.
std::string speakerName(const TranscriptionData::Segment& segment);

std::string srtExport(const TranscriptionData& transcript);
std::string vttExport(const TranscriptionData& transcript);
std::string fcpxmlExport(const TranscriptionData& transcript, SupportedFinalCutFrameRate frameRate);
std::string markdownExport(const TranscriptionData& transcript, Date created);
std::string plainTextExport(const TranscriptionData& transcript);

} // namespace vocalith::detail
