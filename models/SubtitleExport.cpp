#include "models/TranscriptExport_p.h"
#include "models/TranscriptTime.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace vocalith::detail {
namespace {

/// Where SRT and WebVTT differ.
struct SubtitleStyle {
    std::string_view header;
    std::string (*time)(TranscriptTime time);
    void (*appendText)(std::string& file, std::string_view speaker, std::string_view text);
};

/// SRT has no way to escape: an arrow in the text, which some players take for the next cue, is broken by a space.
void appendWithoutArrows(std::string& file, std::string_view text)
{
    constexpr std::string_view kArrow = "-->";
    while (true) {
        const auto arrow = text.find(kArrow);
        file += text.substr(0, arrow);
        if (arrow == std::string_view::npos)
            return;
        file += "-- >";
        text.remove_prefix(arrow + kArrow.size());
    }
}

void appendSrtText(std::string& file, std::string_view speaker, std::string_view text)
{
    if (!speaker.empty()) {
        appendWithoutArrows(file, speaker);
        file += ": ";
    }
    appendWithoutArrows(file, text);
}

void appendEscaped(std::string& file, std::string_view text)
{
    for (const char c : text) {
        switch (c) {
        case '&': file += "&amp;"; break;
        case '<': file += "&lt;"; break;
        case '>': file += "&gt;"; break;
        default: file += c;
        }
    }
}

void appendVttText(std::string& file, std::string_view speaker, std::string_view text)
{
    if (!speaker.empty()) {
        file += "<v ";
        appendEscaped(file, speaker);
        file += '>';
    }
    appendEscaped(file, text);
}

std::string subtitles(const TranscriptionData& transcript, const SubtitleStyle& style)
{
    std::string file(style.header);
    std::size_t number = 0;
    for (const auto& segment : transcript.segments) {
        const auto text = cleanText(segment.text, '\n');
        if (text.empty())
            continue;
        const auto start = transcriptTime(segment.start);
        // A cue that ends no later than it starts is an error in WebVTT and is never shown in SRT.
        const auto end = std::max(transcriptTime(segment.end), start + TranscriptTime(1));
        fmt::format_to(std::back_inserter(file), "{}\n{} --> {}\n", ++number, style.time(start), style.time(end));
        style.appendText(file, speakerName(segment), text);
        file += "\n\n";
    }
    return file;
}

} // namespace

std::string srtExport(const TranscriptionData& transcript)
{
    return subtitles(transcript, {"", &srtTime, &appendSrtText});
}

std::string vttExport(const TranscriptionData& transcript)
{
    return subtitles(transcript, {"WEBVTT\n\n", &webVttTime, &appendVttText});
}

} // namespace vocalith::detail
