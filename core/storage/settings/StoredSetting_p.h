#pragma once

#include "base/Json.h"
#include "core/storage/settings/AudioCrashRecoveryInfo.h"
#include "models/AIPrompt.h"
#include "models/AIProvider.h"
#include "models/KeyboardShortcut.h"
#include "models/MicrophonePriorityEntry.h"
#include "models/QuickCommand.h"
#include "models/TranscriptionModelID.h"
#include "models/WordReplacement.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How the values of settings are stored, and what people call them.
namespace vocalith::detail {

using ReportUndecodable = std::function<void(const std::string& reason)>;

template <class T>
struct StoredSetting {
    static std::optional<Json> encode(const T& value, const Json*) { return toJson(value); }
    static Result<T, JsonError> decode(const Json& stored, const ReportUndecodable&) { return fromJson<T>(stored); }
};

/// Nothing is stored as no entry.
template <class T>
struct StoredSetting<std::optional<T>> {
    static std::optional<Json> encode(const std::optional<T>& value, const Json*)
    {
        return value ? std::optional<Json>(toJson(*value)) : std::nullopt;
    }
    static Result<std::optional<T>, JsonError> decode(const Json& stored, const ReportUndecodable&)
    {
        return fromJson<std::optional<T>>(stored);
    }
};

/// Element by element: one that cannot be read costs only itself, and keeps its place when the list is stored.
template <class T>
struct StoredSetting<std::vector<T>> {
    static std::optional<Json> encode(const std::vector<T>& values, const Json* stored)
    {
        Json::array_t list;
        for (const auto& value : values)
            list.push_back(toJson(value));
        if (!stored || !stored->is_array())
            return list;
        for (std::size_t i = 0; i < stored->size(); ++i) {
            if (!fromJson<T>((*stored)[i]))
                list.insert(list.begin() + static_cast<std::ptrdiff_t>(std::min(i, list.size())), (*stored)[i]);
        }
        return list;
    }

    static Result<std::vector<T>, JsonError> decode(const Json& stored, const ReportUndecodable& report)
    {
        if (!stored.is_array())
            return expected("an array");
        std::vector<T> values;
        for (std::size_t i = 0; i < stored.size(); ++i) {
            auto value = fromJson<T>(stored[i]);
            if (value)
                values.push_back(std::move(*value));
            else
                report(toString(inside(i, std::move(value.error()))));
        }
        return values;
    }
};

/// Written as JSON on a command line: nothing simpler would hold it.
template <class T>
inline constexpr bool kIsStructured = HasJsonFields<T> || HasJsonUnion<T> || kIsVector<T>;
template <>
inline constexpr bool kIsStructured<TranscriptionModelID> = false;
template <>
inline constexpr bool kIsStructured<Data> = false;
template <class T>
inline constexpr bool kIsStructured<std::optional<T>> = kIsStructured<T>;

constexpr std::string_view nameForPeople(JsonType<AudioCrashRecoveryInfo>)
{
    return "a recording in progress";
}
constexpr std::string_view nameForPeople(JsonType<AIPrompt>)
{
    return "a prompt";
}
constexpr std::string_view nameForPeople(JsonType<KeyboardShortcut>)
{
    return "a keyboard shortcut";
}
constexpr std::string_view nameForPeople(JsonType<std::vector<AIPrompt>>)
{
    return "a list of prompts";
}
constexpr std::string_view nameForPeople(JsonType<std::vector<AIProvider>>)
{
    return "a list of AI providers";
}
constexpr std::string_view nameForPeople(JsonType<std::vector<KeyboardShortcut>>)
{
    return "a list of keyboard shortcuts";
}
constexpr std::string_view nameForPeople(JsonType<std::vector<MicrophonePriorityEntry>>)
{
    return "a list of microphones";
}
constexpr std::string_view nameForPeople(JsonType<std::vector<QuickCommandDefinition>>)
{
    return "a list of quick commands";
}
constexpr std::string_view nameForPeople(JsonType<std::vector<WordReplacement>>)
{
    return "a list of word replacements";
}
constexpr std::string_view nameForPeople(JsonType<std::vector<std::string>>)
{
    return "a list of texts";
}

template <class Values>
std::vector<std::string> namesOf(const Values& values)
{
    std::vector<std::string> names;
    names.reserve(std::size(values));
    for (const auto value : values)
        names.emplace_back(caseName(value));
    return names;
}

} // namespace vocalith::detail
