#pragma once

#include "base/Result.h"

#include <nlohmann/json_fwd.hpp>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <tuple>

/// The words in which a type describes its stored form. Every stored type has its description beside it, found by the
/// name of the function and the type that it is for; base/Json.h reads and writes by it.
///
///     struct AudioFile { FileBookmark fileBookmark; double duration; std::int64_t fileSize; };
///
///     constexpr auto jsonFields(JsonType<AudioFile>)
///     {
///         return fields(field("fileBookmark", &AudioFile::fileBookmark), field("duration", &AudioFile::duration),
///                       field("fileSize", &AudioFile::fileSize));
///     }
///
/// An optional member is left out when it is absent; every other one is required when reading.
///
/// A variant has `jsonUnion`, which names its alternatives in their order, as `taggedUnion(…)` or `typedUnion(…)`.
/// An enumeration is stored as the name of its case and needs no description, unless it is `jsonKeyed`.
/// A type that was once stored otherwise has `jsonOlderForm`.
namespace vocalith {

using Json = nlohmann::ordered_json;

/// What is wrong with a JSON text or value, and where: `segments[3].start`, empty for the value itself.
struct JsonError {
    std::string path;
    std::string message;

    bool operator==(const JsonError&) const = default;
};

/// "segments[3].start: expected a number", for the log.
std::string toString(const JsonError& error);

/// Selects the description of `T` among the overloads.
template <class T>
struct JsonType {};

template <class Owner, class Member>
struct JsonField {
    std::string_view key;
    Member Owner::*member;
};

template <class Owner, class Member>
constexpr JsonField<Owner, Member> field(std::string_view key, Member Owner::*member)
{
    return {key, member};
}

template <class... Field>
constexpr std::tuple<Field...> fields(Field... list)
{
    return {list...};
}

/// One alternative of a variant.
struct JsonCase {
    enum class Payload { labelled, unlabelled };
    std::string_view name;
    Payload payload;
};

/// `{"name": {"_0": payload}}`
constexpr JsonCase unlabelled(std::string_view name)
{
    return {name, JsonCase::Payload::unlabelled};
}

/// `{"name": {the payload's own fields}}`; with a payload that has no members, `{"name": {}}`.
constexpr JsonCase labelled(std::string_view name)
{
    return {name, JsonCase::Payload::labelled};
}

template <std::size_t Count>
struct TaggedUnion {
    std::array<JsonCase, Count> cases;
};

/// An object whose single key names the case.
template <class... Case>
constexpr TaggedUnion<sizeof...(Case)> taggedUnion(Case... cases)
{
    return {{cases...}};
}

template <std::size_t Count>
struct TypedUnion {
    std::string_view typeKey;
    std::string_view valueKey;
    std::array<std::string_view, Count> cases;
};

/// An object with two keys: which case it is, and the payload.
template <class... Name>
constexpr TypedUnion<sizeof...(Name)> typedUnion(std::string_view typeKey, std::string_view valueKey, Name... cases)
{
    return {typeKey, valueKey, {cases...}};
}

/// How a form that is no longer written is read: an object with the key `mark`, and without the key `current` where
/// that is not empty, is given to `read`.
template <class T>
struct JsonOlderForm {
    std::string_view mark;
    std::string_view current;
    Result<T, JsonError> (*read)(const Json& older);
};

} // namespace vocalith
