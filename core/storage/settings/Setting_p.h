#pragma once

#include "base/CaseName.h"
#include "base/Iso8601.h"
#include "base/Json.h"
#include "core/storage/settings/Setting.h"
#include "core/storage/settings/StoredSetting_p.h"
#include "core/storage/settings/file/SettingsFile.h"
#include "core/storage/settings/rules/SettingWords.h"
#include "models/TranscriptionModelID.h"

/// The bodies of `Setting`, for the one source file that makes the settings.
namespace vocalith {
namespace detail {

template <class T>
std::vector<std::string> wordsOf()
{
    if constexpr (kIsOptional<T>)
        return wordsOf<typename T::value_type>();
    else if constexpr (std::same_as<T, bool>)
        return {"true", "false"};
    else if constexpr (std::same_as<T, TranscriptionModelID>)
        return namesOf(allPredefinedModelIDs());
    else if constexpr (Enumeration<T>)
        return namesOf(kAllCases<T>);
    else
        return {};
}

template <class T>
std::string describe()
{
    if constexpr (kIsOptional<T>)
        return describe<typename T::value_type>() + ", or none";
    else if constexpr (std::same_as<T, bool>)
        return "true or false";
    else if constexpr (JsonInteger<T>)
        return "a whole number";
    else if constexpr (std::same_as<T, float>)
        return "a number";
    else if constexpr (std::same_as<T, std::string>)
        return "a text";
    else if constexpr (std::same_as<T, Uuid>)
        return "an identifier (UUID)";
    else if constexpr (std::same_as<T, Date>)
        return "a date such as 2026-03-01 or 2026-03-01T12:00:00Z";
    else if constexpr (std::same_as<T, Data>)
        return "the absolute path of a folder";
    else if constexpr (std::same_as<T, TranscriptionModelID>)
        return "a voice model (see: vocalith models list)";
    else if constexpr (Enumeration<T>)
        return oneOf(wordsOf<T>());
    else
        return asJson(nameForPeople(JsonType<T>{}));
}

/// The value that a simple text stands for; nothing where only JSON will do, or the text is no such value.
template <class T>
std::optional<Json> jsonFromWord(const std::string& word)
{
    const auto stored = [](const auto& value) { return value ? std::optional(toJson(*value)) : std::nullopt; };
    if constexpr (kIsOptional<T>)
        return word == kNone ? std::optional<Json>(nullptr) : jsonFromWord<typename T::value_type>(word);
    else if constexpr (std::same_as<T, bool>)
        return stored(boolFromWord(word));
    else if constexpr (JsonInteger<T> || std::same_as<T, float>)
        return numberFromWord(word);
    else if constexpr (std::same_as<T, std::string> || std::same_as<T, Uuid>)
        return isText(word) ? std::optional<Json>(word) : std::nullopt;
    else if constexpr (std::same_as<T, Date>)
        return stored(dateFromWord(word));
    else if constexpr (std::same_as<T, Data>)
        return stored(pathFromWord(word));
    else if constexpr (std::same_as<T, TranscriptionModelID>)
        return toJson(modelFromWord(word));
    else if constexpr (Enumeration<T>)
        return caseFromWord(word, wordsOf<T>());
    else
        return std::nullopt;
}

template <class T>
std::string wordOf(const T& value)
{
    if constexpr (kIsOptional<T>)
        return value ? wordOf(*value) : std::string(kNone);
    else if constexpr (std::same_as<T, std::string>)
        return value;
    else if constexpr (std::same_as<T, float>)
        return numberText(value);
    else if constexpr (std::same_as<T, Uuid>)
        return value.toString();
    else if constexpr (std::same_as<T, Date>)
        return toIso8601(value);
    else if constexpr (std::same_as<T, Data>)
        return std::string(value.begin(), value.end());
    else if constexpr (std::same_as<T, TranscriptionModelID>)
        return toString(value);
    else if constexpr (Enumeration<T>)
        return std::string(caseName(value));
    else
        return dumpJson(toJson(value));
}

/// The value that a rule refuses, for a message.
inline std::string shown(const Json& value)
{
    return value.is_string() ? inQuotes(value.get_ref<const std::string&>()) : dumpJson(value);
}

} // namespace detail

template <class T>
Setting<T>::Setting(SettingsFile& file, const char* key, T fallback, SettingRule<T> rule)
    : m_file(file), m_key(key), m_fallback(std::move(fallback)), m_rule(std::move(rule)), m_value(read()),
      m_store([this](const T& value) {
          m_file.store(m_key, [value](const Json* stored) { return detail::StoredSetting<T>::encode(value, stored); });
      })
{
    m_file.add(*this);
}

template <class T>
T Setting<T>::read() const
{
    const Json* stored = m_file.find(m_key);
    if (!stored)
        return m_fallback;
    const auto report = [this](const std::string& reason) { m_file.reportUndecodable(m_key, reason); };
    auto value = detail::StoredSetting<T>::decode(*stored, report);
    if (!value) {
        report(toString(value.error()));
        return m_fallback;
    }
    if (!m_rule.kept)
        return std::move(*value);
    auto kept = m_rule.kept(*value);
    if (!kept)
        report(detail::shown(*stored) + " is not " + description());
    return std::move(kept).value_or(m_fallback);
}

template <class T>
Result<T, std::string> Setting<T>::decoded(const Json& value) const
{
    auto read = fromJson<T>(value);
    if (!read)
        return failure("The value is not " + description() + ": " + toString(read.error()) + ".");
    if (!m_rule.kept)
        return std::move(*read);
    auto kept = m_rule.kept(*read);
    if (!kept)
        return failure(detail::shown(value) + " is not " + description() + ".");
    return std::move(*kept);
}

template <class T>
bool Setting<T>::holdsSecrets() const
{
    return std::same_as<T, std::vector<AIProvider>>;
}

template <class T>
std::string Setting<T>::description() const
{
    return m_rule.description.empty() ? detail::describe<T>() : m_rule.description;
}

template <class T>
std::vector<std::string> Setting<T>::words() const
{
    return m_rule.words.empty() ? detail::wordsOf<T>() : m_rule.words;
}

template <class T>
Json Setting<T>::json() const
{
    return toJson(get());
}

template <class T>
Json Setting<T>::defaultJson() const
{
    return toJson(m_fallback);
}

template <class T>
std::string Setting<T>::text() const
{
    return detail::wordOf(get());
}

template <class T>
Result<Json, std::string> Setting<T>::parse(const std::string& text) const
{
    if (auto simple = detail::jsonFromWord<T>(text))
        return std::move(*simple);
    if (!detail::kIsStructured<T>)
        return failure(inQuotes(text) + " is not " + description() + ".");
    return parseJson(text).map_error(
        [this](const JsonError& error) { return "The value is not " + description() + ": " + toString(error) + "."; });
}

template <class T>
Result<void, std::string> Setting<T>::check(const Json& value) const
{
    return decoded(value).map([](const T&) {});
}

template <class T>
void Setting<T>::assign(const Json& value)
{
    if (auto checked = decoded(value))
        set(std::move(*checked));
}

template <class T>
void Setting<T>::reset()
{
    m_file.store(m_key, [](const Json*) { return std::nullopt; });
    m_value.set(m_fallback);
}

} // namespace vocalith
