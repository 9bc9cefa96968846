#include "models/TranscriptExport_p.h"
#include "models/TranscriptTime.h"

#include <fmt/format.h>

#include <iterator>

namespace vocalith::detail {
namespace {

/// A character that could begin a piece of Markdown inside a paragraph is preceded by a backslash (CommonMark 2.4).
void appendEscaped(std::string& markdown, std::string_view text)
{
    for (const char c : text) {
        if (std::string_view("\\`*_[]<>&~|").find(c) != std::string_view::npos)
            markdown += '\\';
        markdown += c;
    }
}

/// "yyyy-MM-dd HH:mm:ss Z" in UTC.
std::string dateText(Date date)
{
    using namespace std::chrono;
    const auto midnight = floor<days>(date);
    const year_month_day calendar{midnight};
    const hh_mm_ss time{floor<seconds>(date - midnight)};
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02} +0000", static_cast<int>(calendar.year()),
                       static_cast<unsigned>(calendar.month()), static_cast<unsigned>(calendar.day()),
                       time.hours().count(), time.minutes().count(), time.seconds().count());
}

} // namespace

std::string markdownExport(const TranscriptionData& transcript, Date created)
{
    std::string markdown = fmt::format("# Transcript\n\nCreated: {}\n\nModel: ", dateText(created));
    appendEscaped(markdown, cleanText(toString(transcript.modelId), ' '));
    markdown += '\n';
    for (const auto& segment : transcript.segments) {
        const auto text = cleanText(segment.text, ' ');
        if (text.empty())
            continue;
        fmt::format_to(std::back_inserter(markdown), "\n**{}** ", clockTime(transcriptTime(segment.start)));
        if (const auto speaker = speakerName(segment); !speaker.empty()) {
            markdown += "**";
            appendEscaped(markdown, speaker);
            markdown += ":** ";
        }
        appendEscaped(markdown, text);
        markdown += '\n';
    }
    return markdown;
}

std::string plainTextExport(const TranscriptionData& transcript)
{
    std::string plain;
    std::string lastSpeaker;
    for (const auto& segment : transcript.segments) {
        const auto text = cleanText(segment.text, '\n');
        if (text.empty())
            continue;
        auto speaker = speakerName(segment);
        const bool speakerGoesOn = speaker == lastSpeaker;
        if (!plain.empty())
            plain += speakerGoesOn ? ' ' : '\n';
        if (!speakerGoesOn && !speaker.empty())
            plain += speaker + ": ";
        plain += text;
        lastSpeaker = std::move(speaker);
    }
    return plain;
}

} // namespace vocalith::detail
