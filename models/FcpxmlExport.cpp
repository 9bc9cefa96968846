#include "models/TranscriptExport_p.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <iterator>
#include <queue>
#include <utility>

namespace vocalith::detail {
namespace {

/// The duration of a frame as an exact fraction of a second, and the name of the 1920x1080 video format.
struct FrameRate {
    std::int64_t numerator;
    std::int64_t denominator;
    std::string_view formatName;
};

constexpr FrameRate frameRateOf(SupportedFinalCutFrameRate rate)
{
    switch (rate) {
    case SupportedFinalCutFrameRate::fps23: return {1001, 24000, "FFVideoFormat1080p2398"};
    case SupportedFinalCutFrameRate::fps24: return {1, 24, "FFVideoFormat1080p24"};
    case SupportedFinalCutFrameRate::fps25: return {1, 25, "FFVideoFormat1080p25"};
    case SupportedFinalCutFrameRate::fps29: return {1001, 30000, "FFVideoFormat1080p2997"};
    case SupportedFinalCutFrameRate::fps30: return {1, 30, "FFVideoFormat1080p30"};
    case SupportedFinalCutFrameRate::fps50: return {1, 50, "FFVideoFormat1080p50"};
    case SupportedFinalCutFrameRate::fps59: return {1001, 60000, "FFVideoFormat1080p5994"};
    case SupportedFinalCutFrameRate::fps60: return {1, 60, "FFVideoFormat1080p60"};
    }
    return {1, 30, "FFVideoFormat1080p30"};
}

/// Where a title stands, in whole frames: an editor refuses a time that lies between two.
struct FrameRange {
    std::int64_t start = 0;
    std::int64_t length = 1; ///< at least 1

    std::int64_t end() const { return start + length; }
};

std::int64_t nearestFrame(double seconds, const FrameRate& rate)
{
    constexpr double kLongest = 1e9; // seconds: no recording, and far from any overflow
    const double valid = std::isfinite(seconds) ? std::clamp(seconds, 0.0, kLongest) : 0.0;
    return std::llround(valid * static_cast<double>(rate.denominator) / static_cast<double>(rate.numerator));
}

FrameRange frameRange(const TranscriptionData::Segment& segment, const FrameRate& rate)
{
    const auto start = nearestFrame(segment.start, rate);
    return {start, std::max<std::int64_t>(nearestFrame(segment.end, rate) - start, 1)};
}

std::string time(std::int64_t frames, const FrameRate& rate)
{
    return frames == 0 ? "0s" : fmt::format("{}/{}s", frames * rate.numerator, rate.denominator);
}

/// Gives every title a lane in which it overlaps no other.
class Lanes {
public:
    int laneFor(const FrameRange& range)
    {
        int lane = static_cast<int>(m_lanes.size()) + 1;
        if (!m_lanes.empty() && m_lanes.top().first <= range.start) {
            lane = m_lanes.top().second;
            m_lanes.pop();
        }
        m_lanes.emplace(range.end(), lane);
        return lane;
    }

private:
    using Lane = std::pair<std::int64_t, int>; ///< the frame at which it becomes free, its number
    std::priority_queue<Lane, std::vector<Lane>, std::greater<>> m_lanes;
};

void appendEscaped(std::string& xml, std::string_view text)
{
    for (const char c : text) {
        switch (c) {
        case '&': xml += "&amp;"; break;
        case '"': xml += "&quot;"; break;
        case '\'': xml += "&apos;"; break;
        case '<': xml += "&lt;"; break;
        case '>': xml += "&gt;"; break;
        default: xml += c;
        }
    }
}

void appendTitle(std::string& xml, std::size_t number, int lane, const FrameRange& range, const FrameRate& rate,
                 std::string_view text)
{
    fmt::format_to(std::back_inserter(xml),
                   R"(       <title ref="r2" lane="{}" offset="{}" name="Basic Title" start="0s" duration="{}">
        <text><text-style ref="ts{}">)",
                   lane, time(range.start, rate), time(range.length, rate), number);
    appendEscaped(xml, text);
    fmt::format_to(std::back_inserter(xml), R"(</text-style></text>
        <text-style-def id="ts{}"><text-style font="Helvetica" fontSize="60" fontColor="1 1 1 1" alignment="center"/></text-style-def>
       </title>
)",
                   number);
}

/// What a title takes at most besides its text, in bytes.
constexpr std::size_t kTitleSize = 400;

void appendHead(std::string& xml, const std::string& duration, const FrameRate& rate)
{
    fmt::format_to(std::back_inserter(xml), R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE fcpxml>
<fcpxml version="1.9">
 <resources>
  <format id="r1" name="{0}" frameDuration="{1}" width="1920" height="1080"/>
  <effect id="r2" name="Basic Title" uid=".../Titles.localized/Bumper:Opener.localized/Basic Title.localized/Basic Title.moti"/>
 </resources>
 <library>
  <event name="Vocalith Transcript">
   <project name="Vocalith Transcript">
    <sequence format="r1" duration="{2}" tcStart="0s" tcFormat="NDF">
     <spine>
      <gap name="Gap" offset="0s" start="0s" duration="{2}">
)",
                   rate.formatName, time(1, rate), duration);
}

constexpr std::string_view kFoot = R"(      </gap>
     </spine>
    </sequence>
   </project>
  </event>
 </library>
</fcpxml>
)";

} // namespace

std::string fcpxmlExport(const TranscriptionData& transcript, SupportedFinalCutFrameRate frameRate)
{
    const auto rate = frameRateOf(frameRate);
    std::int64_t length = 1; // an empty clip is no clip
    std::size_t size = 1024;
    for (const auto& segment : transcript.segments) {
        length = std::max(length, frameRange(segment, rate).end());
        size += kTitleSize + segment.text.size();
    }

    std::string xml;
    xml.reserve(size);
    appendHead(xml, time(length, rate), rate);
    Lanes lanes;
    std::size_t number = 0;
    for (const auto& segment : transcript.segments) {
        const auto text = cleanText(segment.text, '\n');
        if (text.empty())
            continue;
        const auto range = frameRange(segment, rate);
        appendTitle(xml, ++number, lanes.laneFor(range), range, rate, text);
    }
    xml += kFoot;
    return xml;
}

} // namespace vocalith::detail
