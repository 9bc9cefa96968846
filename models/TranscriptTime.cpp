#include "models/TranscriptTime.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace vocalith {
namespace {

constexpr double kLongest = 1e9; // seconds: no recording, and far from any overflow

std::string withHours(TranscriptTime time, char separator)
{
    return fmt::format("{}{}{:03}", clockTime(time), separator, time.milliseconds);
}

} // namespace

TranscriptTime TranscriptTime::fromSeconds(double seconds)
{
    if (!std::isfinite(seconds))
        return {};
    double whole = 0;
    const double fraction = std::modf(std::clamp(seconds, 0.0, kLongest), &whole);
    return {static_cast<std::int64_t>(whole), static_cast<int>(fraction * 1000)};
}

std::string srtTime(TranscriptTime time)
{
    return withHours(time, ',');
}

std::string webVttTime(TranscriptTime time)
{
    return withHours(time, '.');
}

std::string clockTime(TranscriptTime time)
{
    return fmt::format("{:02}:{:02}:{:02}", time.seconds / 3600, time.seconds % 3600 / 60, time.seconds % 60);
}

std::string startText(const TranscriptionData::Segment& segment)
{
    const auto time = TranscriptTime::fromSeconds(segment.start);
    return fmt::format("{:02}:{:02}.{:03}", time.seconds / 60, time.seconds % 60, time.milliseconds);
}

std::string lengthText(const TranscriptionData::Segment& segment)
{
    const double length = segment.end - segment.start;
    const double shown = std::isfinite(length) ? std::clamp(length, 0.0, kLongest) : 0.0;
    return shown < 10 ? fmt::format("{:.1f}s", shown) : fmt::format("{:.0f}s", shown);
}

} // namespace vocalith
