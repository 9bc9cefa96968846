#pragma once

#include "base/Json.h"
#include "core/storage/Setting.h"
#include "core/storage/SettingsFile.h"

#include <optional>
#include <string>

namespace vocalith {
namespace detail {

template <class T>
struct StoredSetting {
    static std::optional<Json> encode(const T& value) { return toJson(value); }
    static Result<T, JsonError> decode(const Json& stored) { return fromJson<T>(stored); }
};

/// Nothing is stored as no entry.
template <class T>
struct StoredSetting<std::optional<T>> {
    static std::optional<Json> encode(const std::optional<T>& value)
    {
        return value ? std::optional<Json>(toJson(*value)) : std::nullopt;
    }
    static Result<std::optional<T>, JsonError> decode(const Json& stored) { return fromJson<std::optional<T>>(stored); }
};

/// With the digits that people expect: 0.2, not 0.20000000298023224.
template <>
struct StoredSetting<float> {
    static std::optional<Json> encode(float value);
    static Result<float, JsonError> decode(const Json& stored);
};

template <class T>
T readSetting(const SettingsFile& file, const char* key, T fallback)
{
    const Json* stored = file.find(key);
    if (!stored)
        return fallback;
    auto value = StoredSetting<T>::decode(*stored);
    if (value)
        return std::move(*value);
    file.reportUndecodable(key, toString(value.error()));
    return fallback;
}

} // namespace detail

template <class T>
Setting<T>::Setting(SettingsFile& file, const char* key, T fallback)
    : m_value(detail::readSetting<T>(file, key, std::move(fallback))),
      m_store(
          [&file, key = std::string(key)](const T& value) { file.store(key, detail::StoredSetting<T>::encode(value)); })
{}

} // namespace vocalith
