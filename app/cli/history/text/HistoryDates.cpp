#include "app/cli/history/text/HistoryDates.h"

#include <fmt/format.h>

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace vocalith {
namespace {

constexpr int kSecondsPerMinute = 60;
constexpr double kLongest = 1e9; // seconds

Date dateOf(const QDateTime& time)
{
    return Date(std::chrono::milliseconds(time.toMSecsSinceEpoch()));
}

std::string formatted(Date date, const char* format)
{
    const auto time = QDateTime::fromMSecsSinceEpoch(date.time_since_epoch().count());
    return time.toString(QString::fromLatin1(format)).toStdString();
}

} // namespace

std::string localDateAndTime(Date date)
{
    return formatted(date, "yyyy-MM-dd HH:mm");
}

std::string localTimestamp(Date date)
{
    return formatted(date, "yyyy-MM-dd-HHmmss");
}

std::string durationText(double seconds)
{
    const auto whole = std::isfinite(seconds) ? std::llround(std::clamp(seconds, 0.0, kLongest)) : 0;
    const auto minutes = whole / kSecondsPerMinute;
    if (minutes < kSecondsPerMinute)
        return fmt::format("{}:{:02}", minutes, whole % kSecondsPerMinute);
    return fmt::format("{}:{:02}:{:02}", minutes / kSecondsPerMinute, minutes % kSecondsPerMinute,
                       whole % kSecondsPerMinute);
}

Result<Period, std::string> periodNamed(const std::string& text)
{
    const auto typed = QString::fromStdString(text);
    if (const auto day = QDate::fromString(typed, QStringLiteral("yyyy-MM-dd")); day.isValid())
        return Period{dateOf(day.startOfDay()), dateOf(day.addDays(1).startOfDay())};
    if (const auto minute = QDateTime::fromString(typed, QStringLiteral("yyyy-MM-ddTHH:mm")); minute.isValid())
        return Period{dateOf(minute), dateOf(minute.addSecs(kSecondsPerMinute))};
    return failure("\"" + text + "\" is no date. Write it as 2026-01-31 or 2026-01-31T09:05.");
}

} // namespace vocalith
