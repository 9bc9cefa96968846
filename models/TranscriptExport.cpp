#include "models/TranscriptExport.h"

#include "base/Json.h"
#include "base/Text.h"
#include "models/TranscriptExport_p.h"

#include <array>

namespace vocalith {
namespace {

struct NamedFormat {
    std::string_view name;
    ExportFormat format;
};

constexpr std::array kFormats = {
    NamedFormat{"fcpxml", FcpxmlFormat{}},  NamedFormat{"srt", SrtFormat{}},
    NamedFormat{"vtt", VttFormat{}},        NamedFormat{"webvtt", VttFormat{}},
    NamedFormat{"md", MarkdownFormat{}},    NamedFormat{"markdown", MarkdownFormat{}},
    NamedFormat{"json", JsonFormat{}},      NamedFormat{"txt", PlainTextFormat{}},
    NamedFormat{"text", PlainTextFormat{}}, NamedFormat{"plaintext", PlainTextFormat{}},
};

struct NamedRate {
    std::string_view name;
    SupportedFinalCutFrameRate rate;
};

constexpr std::array kRates = {
    NamedRate{"23", SupportedFinalCutFrameRate::fps23},     NamedRate{"23.98", SupportedFinalCutFrameRate::fps23},
    NamedRate{"23.976", SupportedFinalCutFrameRate::fps23}, NamedRate{"24", SupportedFinalCutFrameRate::fps24},
    NamedRate{"25", SupportedFinalCutFrameRate::fps25},     NamedRate{"29", SupportedFinalCutFrameRate::fps29},
    NamedRate{"29.97", SupportedFinalCutFrameRate::fps29},  NamedRate{"30", SupportedFinalCutFrameRate::fps30},
    NamedRate{"50", SupportedFinalCutFrameRate::fps50},     NamedRate{"59", SupportedFinalCutFrameRate::fps59},
    NamedRate{"59.94", SupportedFinalCutFrameRate::fps59},  NamedRate{"60", SupportedFinalCutFrameRate::fps60},
};

/// The stored form, indented. Segment by segment, because the whole tree of a long transcript takes many times the
/// memory of its text.
std::string jsonExport(const TranscriptionData& transcript)
{
    constexpr std::string_view kSegmentIndent = "\n    ";
    constexpr std::string_view kEmptyList = "[]\n}";
    auto text = dumpJson(toJson(TranscriptionData{transcript.modelId, {}}), 2);
    if (transcript.segments.empty())
        return text + '\n';
    text.resize(text.size() - kEmptyList.size());
    char separator = '[';
    for (const auto& segment : transcript.segments) {
        text += separator;
        text += kSegmentIndent;
        for (const char c : dumpJson(toJson(segment), 2)) {
            if (c == '\n') // of the form: those of the text are escaped
                text += kSegmentIndent;
            else
                text += c;
        }
        separator = ',';
    }
    text += "\n  ]\n}\n";
    return text;
}

struct Exporter {
    const TranscriptionData& transcript;
    Date created;

    std::string operator()(const FcpxmlFormat& format) const
    {
        return detail::fcpxmlExport(transcript, format.frameRate);
    }
    std::string operator()(SrtFormat) const { return detail::srtExport(transcript); }
    std::string operator()(VttFormat) const { return detail::vttExport(transcript); }
    std::string operator()(MarkdownFormat) const { return detail::markdownExport(transcript, created); }
    std::string operator()(JsonFormat) const { return jsonExport(transcript); }
    std::string operator()(PlainTextFormat) const { return detail::plainTextExport(transcript); }
};

} // namespace

std::string exportTranscript(const TranscriptionData& transcript, const ExportFormat& format, Date created)
{
    return std::visit(Exporter{transcript, created}, format);
}

std::string_view fileExtension(const ExportFormat& format)
{
    constexpr std::array<std::string_view, std::variant_size_v<ExportFormat>> kExtensions = {"fcpxml", "srt",  "vtt",
                                                                                             "md",     "json", "txt"};
    return kExtensions[format.index()];
}

std::optional<ExportFormat> exportFormat(std::string_view name)
{
    const auto wanted = asciiLowerCase(name);
    for (const auto& known : kFormats) {
        if (known.name == wanted)
            return known.format;
    }
    constexpr std::string_view kWithRate = "fcpxml:";
    if (!wanted.starts_with(kWithRate))
        return std::nullopt;
    for (const auto& known : kRates) {
        if (known.name == std::string_view(wanted).substr(kWithRate.size()))
            return FcpxmlFormat{known.rate};
    }
    return std::nullopt;
}

namespace detail {

std::string speakerName(const TranscriptionData::Segment& segment)
{
    return segment.speakerId ? cleanText(*segment.speakerId, ' ') : std::string();
}

} // namespace detail
} // namespace vocalith
