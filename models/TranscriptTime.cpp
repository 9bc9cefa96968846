#include "models/TranscriptTime.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vocalith {
namespace {

constexpr double kLongest = 1e9; // seconds: no recording, and far from any overflow

std::string withHours(TranscriptTime time, char separator)
{
    return fmt::format("{}{}{:03}", clockTime(time), separator, time.count() % 1000);
}

} // namespace

TranscriptTime transcriptTime(double seconds)
{
    if (!std::isfinite(seconds))
        return TranscriptTime{0};
    double whole = 0;
    const double fraction = std::modf(std::clamp(seconds, 0.0, kLongest), &whole);
    return std::chrono::seconds(static_cast<std::int64_t>(whole)) +
           TranscriptTime(static_cast<std::int64_t>(fraction * 1000));
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
    const auto seconds = time.count() / 1000;
    return fmt::format("{:02}:{:02}:{:02}", seconds / 3600, seconds % 3600 / 60, seconds % 60);
}

std::string startText(const TranscriptionData::Segment& segment)
{
    const auto time = transcriptTime(segment.start);
    const auto seconds = time.count() / 1000;
    return fmt::format("{:02}:{:02}.{:03}", seconds / 60, seconds % 60, time.count() % 1000);
}

std::string lengthText(const TranscriptionData::Segment& segment)
{
    const double length = segment.end - segment.start;
    const double shown = std::isfinite(length) ? std::clamp(length, 0.0, kLongest) : 0.0;
    return shown < 10 ? fmt::format("{:.1f}s", shown) : fmt::format("{:.0f}s", shown);
}

} // namespace vocalith
