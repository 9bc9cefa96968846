#pragma once

#include "base/JsonTypes_p.h"

#include <nlohmann/json.hpp>

#include <tuple>
#include <type_traits>
#include <utility>

/// The reading half of base/Json.h.
namespace vocalith::detail {

Result<void, JsonError> read(const Json& json, std::string& text);
Result<void, JsonError> read(const Json& json, bool& value);
Result<void, JsonError> read(const Json& json, double& value);
Result<void, JsonError> read(const Json& json, float& value);
Result<void, JsonError> read(const Json& json, std::int64_t& value);
Result<void, JsonError> read(const Json& json, std::uint64_t& value);
Result<void, JsonError> read(const Json& json, Uuid& id);
Result<void, JsonError> read(const Json& json, Date& date);
Result<void, JsonError> read(const Json& json, Data& bytes);
Result<void, JsonError> read(const Json& json, std::filesystem::path& path);

/// The error of a part, seen from the whole: the key comes before the path.
JsonError inside(std::string_view key, JsonError error);
JsonError inside(std::size_t index, JsonError error);
JsonError missing(std::string_view key);
Failure<JsonError> expected(std::string_view what);
Failure<JsonError> unknownCase(std::string_view name);

/// The member with that key, or nothing; no member has an empty key.
const Json* find(const Json& object, std::string_view key);
/// The only member of a tagged union, or the error that says why it is none.
Result<std::pair<std::string_view, const Json*>, JsonError> onlyMember(const Json& json);

template <class T>
Result<void, JsonError> readInto(const Json& json, T& value);

template <class T, class Field>
bool readField(const Json& object, T& value, const Field& field, JsonError& error)
{
    auto& member = value.*field.member;
    const auto* json = find(object, field.key);
    if (!json) {
        if constexpr (kIsOptional<std::remove_cvref_t<decltype(member)>>)
            return true;
        error = missing(field.key);
        return false;
    }
    auto outcome = readInto(*json, member);
    if (!outcome)
        error = inside(field.key, std::move(outcome.error()));
    return outcome.has_value();
}

template <class T>
Result<void, JsonError> readFields(const Json& json, T& value)
{
    if (!json.is_object())
        return expected("an object");
    JsonError error;
    const bool complete = std::apply(
        [&](const auto&... field) { return (readField(json, value, field, error) && ...); }, jsonFields(JsonType<T>{}));
    if (!complete)
        return failure(std::move(error));
    return {};
}

/// Calls `visitor` with the index of the alternative that is numbered `wanted` as a compile-time constant.
template <std::size_t Count, class Visitor>
Result<void, JsonError> withIndex(std::size_t wanted, const Visitor& visitor)
{
    Result<void, JsonError> outcome;
    [&]<std::size_t... Index>(std::index_sequence<Index...>)
    {
        static_cast<void>(
            ((wanted == Index && (outcome = visitor(std::integral_constant<std::size_t, Index>()), true)) || ...));
    }
    (std::make_index_sequence<Count>());
    return outcome;
}

template <class T>
Result<void, JsonError> readPayload(const Json& json, JsonCase::Payload form, T& payload)
{
    if (!json.is_object())
        return expected("an object");
    if constexpr (std::is_empty_v<T>) {
        return {};
    } else {
        if (form == JsonCase::Payload::labelled)
            return readInto(json, payload);
        const auto* bare = find(json, kUnlabelled);
        if (!bare)
            return failure(missing(kUnlabelled));
        return readInto(*bare, payload).map_error([](JsonError error) {
            return inside(kUnlabelled, std::move(error));
        });
    }
}

template <class Variant, std::size_t Count>
Result<void, JsonError> readUnion(const Json& json, Variant& value, const TaggedUnion<Count>& description)
{
    static_assert(Count == std::variant_size_v<Variant>, "every alternative needs its name");
    const auto member = onlyMember(json);
    if (!member)
        return failure(member.error());
    const auto name = member->first;
    for (std::size_t i = 0; i < Count; ++i) {
        if (description.cases[i].name != name)
            continue;
        return withIndex<Count>(i,
                                [&]<std::size_t Index>(std::integral_constant<std::size_t, Index>) {
                                    return readPayload(*member->second, description.cases[Index].payload,
                                                       value.template emplace<Index>());
                                })
            .map_error([&](JsonError error) { return inside(name, std::move(error)); });
    }
    return failure(inside(name, unknownCase(name).value()));
}

template <class Variant, std::size_t Count>
Result<void, JsonError> readUnion(const Json& json, Variant& value, const TypedUnion<Count>& description)
{
    static_assert(Count == std::variant_size_v<Variant>, "every alternative needs its name");
    if (!json.is_object())
        return expected("an object");
    const auto* type = find(json, description.typeKey);
    const auto* payload = find(json, description.valueKey);
    if (!type || !payload)
        return failure(missing(type ? description.valueKey : description.typeKey));
    std::string name;
    if (auto outcome = read(*type, name); !outcome)
        return failure(inside(description.typeKey, std::move(outcome.error())));
    for (std::size_t i = 0; i < Count; ++i) {
        if (description.cases[i] != name)
            continue;
        return withIndex<Count>(i,
                                [&]<std::size_t Index>(std::integral_constant<std::size_t, Index>) {
                                    return readInto(*payload, value.template emplace<Index>());
                                })
            .map_error([&](JsonError error) { return inside(description.valueKey, std::move(error)); });
    }
    return failure(inside(description.typeKey, unknownCase(name).value()));
}

template <Enumeration E>
Result<void, JsonError> readCase(std::string_view name, E& value)
{
    const auto found = caseNamed<E>(name);
    if (!found)
        return unknownCase(name);
    value = *found;
    return {};
}

template <Enumeration E>
Result<void, JsonError> readEnumeration(const Json& json, E& value)
{
    if constexpr (KeyedEnumeration<E>) {
        const auto member = onlyMember(json);
        if (!member)
            return failure(member.error());
        return readCase(member->first, value).map_error([&](JsonError error) {
            return inside(member->first, std::move(error));
        });
    } else {
        std::string name;
        return read(json, name).and_then([&] { return readCase(name, value); });
    }
}

template <class T>
Result<void, JsonError> readOptional(const Json& json, std::optional<T>& value)
{
    value = std::nullopt;
    if (json.is_null())
        return {};
    T inner{};
    auto outcome = readInto(json, inner);
    if (outcome)
        value = std::move(inner);
    return outcome;
}

template <class T>
Result<void, JsonError> readVector(const Json& json, std::vector<T>& values)
{
    if (!json.is_array())
        return expected("an array");
    values.clear();
    values.reserve(json.size());
    for (const auto& element : json) {
        T value{};
        if (auto outcome = readInto(element, value); !outcome)
            return failure(inside(values.size(), std::move(outcome.error())));
        values.push_back(std::move(value));
    }
    return {};
}

template <class T>
Result<void, JsonError> readMap(const Json& json, std::map<std::string, T>& values)
{
    if (!json.is_object())
        return expected("an object");
    values.clear();
    for (const auto& [key, element] : json.template get_ref<const Json::object_t&>()) {
        if (auto outcome = readInto(element, values[key]); !outcome)
            return failure(inside(key, std::move(outcome.error())));
    }
    return {};
}

template <JsonInteger T>
Result<void, JsonError> readInteger(const Json& json, T& value)
{
    std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t> wide = 0;
    return read(json, wide).and_then([&]() -> Result<void, JsonError> {
        if (!std::in_range<T>(wide))
            return expected("a smaller integer");
        value = static_cast<T>(wide);
        return {};
    });
}

template <class T>
Result<void, JsonError> readInto(const Json& json, T& value)
{
    if constexpr (HasJsonOlderForm<T>) {
        const JsonOlderForm<T> older = jsonOlderForm(JsonType<T>{});
        if (find(json, older.mark) && !find(json, older.current))
            return older.read(json).map([&](T&& converted) { value = std::move(converted); });
    }
    if constexpr (std::same_as<T, Json>) {
        value = json;
        return {};
    } else if constexpr (JsonLeaf<T>) {
        return read(json, value);
    } else if constexpr (JsonInteger<T>) {
        return readInteger(json, value);
    } else if constexpr (Enumeration<T>) {
        return readEnumeration(json, value);
    } else if constexpr (kIsOptional<T>) {
        return readOptional(json, value);
    } else if constexpr (kIsVector<T>) {
        return readVector(json, value);
    } else if constexpr (kIsMap<T>) {
        return readMap(json, value);
    } else if constexpr (HasJsonUnion<T>) {
        return readUnion(json, value, jsonUnion(JsonType<T>{}));
    } else {
        static_assert(HasJsonFields<T>, "the type has no jsonFields or jsonUnion beside it");
        return readFields(json, value);
    }
}

} // namespace vocalith::detail
