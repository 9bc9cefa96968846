#include "base/Iso8601.h"

#include <fmt/format.h>

#include <algorithm>

namespace vocalith {
namespace {

using namespace std::chrono;

constexpr Date kFirst = sys_days{year{0} / 1 / 1};
constexpr Date kLast = sys_days{year{10000} / 1 / 1} - milliseconds{1};

/// Takes a text apart from its front.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_rest(text) {}

    bool isAtEnd() const { return m_rest.empty(); }

    /// One of the characters, where it comes next; otherwise 0.
    char any(std::string_view choices)
    {
        if (m_rest.empty() || choices.find(m_rest.front()) == std::string_view::npos)
            return 0;
        const char taken = m_rest.front();
        m_rest.remove_prefix(1);
        return taken;
    }

    std::optional<int> digits(std::size_t count)
    {
        int number = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const char digit = any("0123456789");
            if (digit == 0)
                return std::nullopt;
            number = number * 10 + (digit - '0');
        }
        return number;
    }

private:
    std::string_view m_rest;
};

std::optional<sys_days> readDay(Scanner& scanner)
{
    const auto y = scanner.digits(4);
    const bool firstDash = scanner.any("-") != 0;
    const auto m = scanner.digits(2);
    const bool secondDash = scanner.any("-") != 0;
    const auto d = scanner.digits(2);
    if (!y || !firstDash || !m || !secondDash || !d)
        return std::nullopt;
    const auto date = year{*y} / month{static_cast<unsigned>(*m)} / day{static_cast<unsigned>(*d)};
    return date.ok() ? std::optional(sys_days{date}) : std::nullopt;
}

milliseconds readFraction(Scanner& scanner)
{
    int value = 0;
    int scale = 100;
    while (const char digit = scanner.any("0123456789")) {
        value += (digit - '0') * scale;
        scale /= 10;
    }
    return milliseconds{value};
}

std::optional<milliseconds> readTime(Scanner& scanner)
{
    const auto h = scanner.digits(2);
    const bool firstColon = scanner.any(":") != 0;
    const auto m = scanner.digits(2);
    const bool secondColon = scanner.any(":") != 0;
    const auto s = scanner.digits(2);
    if (!h || !firstColon || !m || !secondColon || !s || *h > 23 || *m > 59 || *s > 60)
        return std::nullopt;
    const milliseconds whole = hours{*h} + minutes{*m} + seconds{*s};
    return scanner.any(".,") != 0 ? whole + readFraction(scanner) : whole;
}

std::optional<minutes> readZone(Scanner& scanner)
{
    if (scanner.any("Zz") != 0)
        return minutes{0};
    const char sign = scanner.any("+-");
    const auto h = scanner.digits(2);
    scanner.any(":");
    const auto m = scanner.digits(2);
    if (sign == 0 || !h || !m || *h > 23 || *m > 59)
        return std::nullopt;
    const minutes offset = hours{*h} + minutes{*m};
    return sign == '-' ? -offset : offset;
}

} // namespace

std::string toIso8601(Date date)
{
    const auto shown = std::clamp(date, kFirst, kLast);
    const auto midnight = floor<days>(shown);
    const year_month_day calendar{midnight};
    const hh_mm_ss time{shown - midnight};
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", static_cast<int>(calendar.year()),
                       static_cast<unsigned>(calendar.month()), static_cast<unsigned>(calendar.day()),
                       time.hours().count(), time.minutes().count(), time.seconds().count(), time.subseconds().count());
}

std::optional<Date> dateFromIso8601(std::string_view text)
{
    Scanner scanner(text);
    const auto midnight = readDay(scanner);
    if (!midnight || scanner.any("Tt") == 0)
        return std::nullopt;
    const auto time = readTime(scanner);
    const auto zone = readZone(scanner);
    if (!time || !zone || !scanner.isAtEnd())
        return std::nullopt;
    return *midnight + *time - *zone;
}

} // namespace vocalith
