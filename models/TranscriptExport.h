#pragma once

#include "base/Date.h"
#include "models/TranscriptionData.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace vocalith {

/// The frame rates of a Final Cut project; 23, 29 and 59 are the broadcast rates of 24, 30 and 60 times 1000/1001.
enum class SupportedFinalCutFrameRate { fps23, fps24, fps25, fps29, fps30, fps50, fps59, fps60 };

struct FcpxmlFormat {
    SupportedFinalCutFrameRate frameRate = SupportedFinalCutFrameRate::fps30;
    bool operator==(const FcpxmlFormat&) const = default;
};
struct SrtFormat {
    bool operator==(const SrtFormat&) const = default;
};
struct VttFormat {
    bool operator==(const VttFormat&) const = default;
};
struct MarkdownFormat {
    bool operator==(const MarkdownFormat&) const = default;
};
struct JsonFormat {
    bool operator==(const JsonFormat&) const = default;
};
struct PlainTextFormat {
    bool operator==(const PlainTextFormat&) const = default;
};

/// The forms in which a transcript leaves the program.
using ExportFormat = std::variant<FcpxmlFormat, SrtFormat, VttFormat, MarkdownFormat, JsonFormat, PlainTextFormat>;

/// The transcript as the content of a file, in valid UTF-8. Segments without visible text are left out (but for JSON,
/// which is the stored form). `created` is shown by Markdown, in UTC. Takes time linear in the transcript; any thread.
std::string exportTranscript(const TranscriptionData& transcript, const ExportFormat& format, Date created);

/// "srt", "vtt", "md", "json", "txt" or "fcpxml".
std::string_view fileExtension(const ExportFormat& format);

/// The format that a user names, in any case: "srt", "vtt", "md" or "markdown", "json", "txt" or "text", and "fcpxml",
/// which may carry a frame rate as in "fcpxml:29.97".
std::optional<ExportFormat> exportFormat(std::string_view name);

} // namespace vocalith
