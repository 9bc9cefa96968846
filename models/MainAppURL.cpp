#include "models/MainAppURL.h"

#include "base/CaseName.h"
#include "base/Text.h"
#include "base/Url.h"

#include <algorithm>

namespace vocalith {
namespace {

std::optional<MainAppURL::Route> routeNamed(std::string_view name)
{
    if (name.empty())
        return MainAppURL::Route::base;
    for (const auto route : kAllCases<MainAppURL::Route>) {
        if (sameIgnoringCase(caseName(route), name))
            return route;
    }
    return std::nullopt;
}

/// The text up to the first of `separators`, which are taken off `rest` together with it.
std::string_view takeUntil(std::string_view& rest, std::string_view separators)
{
    const auto end = std::min(rest.find_first_of(separators), rest.size());
    const auto taken = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return taken;
}

bool readParameters(std::string_view query, std::map<std::string, std::string>& parameters)
{
    while (!query.empty()) {
        auto value = takeUntil(query, "&");
        const auto key = percentDecoded(takeUntil(value, "="));
        const auto decoded = percentDecoded(value);
        if (!key || !decoded)
            return false;
        if (!key->empty())
            parameters[*key] = *decoded;
    }
    return true;
}

} // namespace

std::optional<MainAppURL> MainAppURL::parse(std::string_view url)
{
    url = takeUntil(url, "#");
    if (!sameIgnoringCase(url.substr(0, kScheme.size() + 1), std::string(kScheme) + ":"))
        return std::nullopt;
    url.remove_prefix(kScheme.size() + 1);
    auto place = takeUntil(url, "?");
    place.remove_prefix(std::min(place.find_first_not_of('/'), place.size()));
    while (place.ends_with('/'))
        place.remove_suffix(1);
    const auto route = routeNamed(place);
    if (!route)
        return std::nullopt;
    MainAppURL parsed{*route, {}};
    if (!readParameters(url, parsed.parameters))
        return std::nullopt;
    return parsed;
}

std::string MainAppURL::toString() const
{
    std::string url(kScheme);
    url += "://";
    url += caseName(route);
    char separator = '?';
    for (const auto& [key, value] : parameters) {
        url += separator;
        url += percentEncoded(key);
        url += '=';
        url += percentEncoded(value);
        separator = '&';
    }
    return url;
}

} // namespace vocalith
