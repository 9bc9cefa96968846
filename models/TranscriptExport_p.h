#pragma once

#include "base/Text.h"
#include "models/TranscriptExport.h"

namespace vocalith::detail {

/// The clean name of the segment's speaker, empty when it has none.
std::string speakerName(const TranscriptionData::Segment& segment);

std::string srtExport(const TranscriptionData& transcript);
std::string vttExport(const TranscriptionData& transcript);
std::string fcpxmlExport(const TranscriptionData& transcript, SupportedFinalCutFrameRate frameRate);
std::string markdownExport(const TranscriptionData& transcript, Date created);
std::string plainTextExport(const TranscriptionData& transcript);

} // namespace vocalith::detail
