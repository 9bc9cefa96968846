#include "base/Json.h"

#include "base/Iso8601.h"

#include <QByteArray>

#include <fmt/format.h>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace vocalith {
namespace {

constexpr std::size_t kDeepest = 256;
constexpr Date kReferenceDate = std::chrono::sys_days{std::chrono::year{2001} / 1 / 1};

/// Looks only at brackets outside strings: what is wrong besides the depth is the parser's to find.
bool isTooDeep(std::string_view text)
{
    std::size_t depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth > kDeepest)
                return true;
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return false;
}

/// The library begins its messages with "[json.exception.parse_error.101] ", which tells nobody anything, and quotes
/// what it read last, which may be an API key or what somebody said.
std::string plain(std::string_view message)
{
    const auto code = message.starts_with('[') ? message.find("] ") : std::string_view::npos;
    if (code != std::string_view::npos)
        message.remove_prefix(code + 2);
    return std::string(message.substr(0, message.find("; last read: ")));
}

std::string joined(std::string_view key, std::string_view path)
{
    std::string whole(key);
    if (!path.empty() && path.front() != '[')
        whole += '.';
    whole += path;
    return whole;
}

} // namespace

std::string toString(const JsonError& error)
{
    return error.path.empty() ? error.message : fmt::format("{}: {}", error.path, error.message);
}

Result<Json, JsonError> parseJson(std::string_view text)
{
    if (isTooDeep(text))
        return failure(JsonError{"", fmt::format("nested more than {} deep", kDeepest)});
    try {
        return Json::parse(text);
    } catch (const nlohmann::json::exception& e) {
        return failure(JsonError{"", plain(e.what())});
    }
}

std::string dumpJson(const Json& json, int indent)
{
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

namespace detail {

JsonError inside(std::string_view key, JsonError error)
{
    return {joined(key, error.path), std::move(error.message)};
}

JsonError inside(std::size_t index, JsonError error)
{
    return {joined(fmt::format("[{}]", index), error.path), std::move(error.message)};
}

JsonError missing(std::string_view key)
{
    return {std::string(key), "missing"};
}

Failure<JsonError> expected(std::string_view what)
{
    return failure(JsonError{"", fmt::format("expected {}", what)});
}

Failure<JsonError> unknownCase(std::string_view name)
{
    return failure(JsonError{"", fmt::format("unknown case \"{}\"", name)});
}

const Json* find(const Json& object, std::string_view key)
{
    if (!object.is_object() || key.empty())
        return nullptr;
    const auto& members = object.get_ref<const Json::object_t&>();
    for (const auto& [name, value] : members) {
        if (name == key)
            return &value;
    }
    return nullptr;
}

Json wrapped(std::string_view key, Json value)
{
    Json::object_t object;
    object.emplace_back(std::string(key), std::move(value));
    return object;
}

Result<std::pair<std::string_view, const Json*>, JsonError> onlyMember(const Json& json)
{
    if (!json.is_object() || json.size() != 1)
        return expected("an object with one key that names the case");
    const auto& [name, value] = json.get_ref<const Json::object_t&>().front();
    return std::pair<std::string_view, const Json*>(name, &value);
}

Json write(double value)
{
    return std::isfinite(value) ? value : 0.0;
}

Json write(float value)
{
    return std::isfinite(value) ? std::strtod(fmt::format("{}", value).c_str(), nullptr) : 0.0;
}

Json write(const Uuid& id)
{
    return id.toString();
}

Json write(Date date)
{
    return toIso8601(date);
}

Json write(const Data& bytes)
{
    const auto raw =
        QByteArray::fromRawData(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size()));
    return raw.toBase64().toStdString();
}

Json write(const std::filesystem::path& path)
{
    return path.string();
}

Result<void, JsonError> read(const Json& json, std::string& text)
{
    if (!json.is_string())
        return expected("a string");
    text = json.get_ref<const std::string&>();
    return {};
}

Result<void, JsonError> read(const Json& json, bool& value)
{
    if (!json.is_boolean())
        return expected("a boolean");
    value = json.get<bool>();
    return {};
}

Result<void, JsonError> read(const Json& json, double& value)
{
    if (!json.is_number())
        return expected("a number");
    value = json.get<double>();
    return {};
}

Result<void, JsonError> read(const Json& json, float& value)
{
    double wide = 0;
    return read(json, wide).and_then([&]() -> Result<void, JsonError> {
        if (std::abs(wide) > std::numeric_limits<float>::max())
            return expected("a smaller number");
        value = static_cast<float>(wide);
        return {};
    });
}

Result<void, JsonError> read(const Json& json, std::int64_t& value)
{
    if (json.is_number_unsigned() && !std::in_range<std::int64_t>(json.get<std::uint64_t>()))
        return expected("a smaller integer");
    if (!json.is_number_integer())
        return expected("an integer");
    value = json.get<std::int64_t>();
    return {};
}

Result<void, JsonError> read(const Json& json, std::uint64_t& value)
{
    // What a program has put together holds its positive numbers as signed ones.
    if (!json.is_number_integer() || (!json.is_number_unsigned() && json.get<std::int64_t>() < 0))
        return expected("an integer that is not negative");
    value = json.get<std::uint64_t>();
    return {};
}

Result<void, JsonError> read(const Json& json, Uuid& id)
{
    const auto parsed = json.is_string() ? Uuid::parse(json.get_ref<const std::string&>()) : std::nullopt;
    if (!parsed)
        return expected("a UUID");
    id = *parsed;
    return {};
}

Result<void, JsonError> read(const Json& json, Date& date)
{
    std::optional<Date> parsed;
    if (json.is_string()) {
        parsed = dateFromIso8601(json.get_ref<const std::string&>());
    } else if (json.is_number()) {
        // Milliseconds beyond this are no date of the calendar, and would overflow.
        constexpr double kFarthest = 1e12;
        const double seconds = json.get<double>();
        if (std::abs(seconds) < kFarthest)
            parsed = kReferenceDate + std::chrono::milliseconds(std::llround(seconds * 1000));
    }
    if (!parsed)
        return expected("a date");
    date = *parsed;
    return {};
}

Result<void, JsonError> read(const Json& json, Data& bytes)
{
    if (!json.is_string())
        return expected("base64");
    const auto decoded = QByteArray::fromBase64Encoding(QByteArray::fromStdString(json.get_ref<const std::string&>()),
                                                        QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return expected("base64");
    bytes.assign((*decoded).begin(), (*decoded).end());
    return {};
}

Result<void, JsonError> read(const Json& json, std::filesystem::path& path)
{
    std::string text;
    return read(json, text).map([&] { path = std::move(text); });
}

} // namespace detail
} // namespace vocalith
