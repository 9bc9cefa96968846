#pragma once

#include "base/JsonTypes_p.h"

#include <nlohmann/json.hpp>

#include <tuple>
#include <type_traits>
#include <utility>

/// The writing half of base/Json.h.
namespace vocalith {

template <class T>
Json toJson(const T& value);

namespace detail {

Json write(double value);
/// With the digits that people expect: 0.2, not 0.20000000298023224.
Json write(float value);
Json write(const Uuid& id);
Json write(Date date);
Json write(const Data& bytes);
Json write(const std::filesystem::path& path);

/// An object of one member.
Json wrapped(std::string_view key, Json value);

template <class T, class Field>
void writeField(Json::object_t& object, const T& value, const Field& field)
{
    const auto& member = value.*field.member;
    if constexpr (kIsOptional<std::remove_cvref_t<decltype(member)>>) {
        if (member)
            object.emplace_back(std::string(field.key), toJson(*member));
    } else {
        object.emplace_back(std::string(field.key), toJson(member));
    }
}

template <class T>
Json writeFields(const T& value)
{
    return std::apply(
        [&](const auto&... field) {
            Json::object_t object;
            object.reserve(sizeof...(field));
            (writeField(object, value, field), ...);
            return Json(std::move(object));
        },
        jsonFields(JsonType<T>{}));
}

template <class Variant, std::size_t Count>
Json writeUnion(const Variant& value, const TaggedUnion<Count>& description)
{
    static_assert(Count == std::variant_size_v<Variant>, "every alternative needs its name");
    const JsonCase& chosen = description.cases[value.index()];
    return std::visit(
        [&]<class T>(const T& payload) {
            if constexpr (std::is_empty_v<T>)
                return wrapped(chosen.name, Json::object());
            else if (chosen.payload == JsonCase::Payload::unlabelled)
                return wrapped(chosen.name, wrapped(kUnlabelled, toJson(payload)));
            else
                return wrapped(chosen.name, toJson(payload));
        },
        value);
}

template <class Variant, std::size_t Count>
Json writeUnion(const Variant& value, const TypedUnion<Count>& description)
{
    static_assert(Count == std::variant_size_v<Variant>, "every alternative needs its name");
    Json::object_t object;
    object.reserve(2);
    object.emplace_back(std::string(description.typeKey), std::string(description.cases[value.index()]));
    object.emplace_back(std::string(description.valueKey),
                        std::visit([](const auto& payload) { return toJson(payload); }, value));
    return object;
}

} // namespace detail

template <class T>
Json toJson(const T& value)
{
    if constexpr (std::same_as<T, Json> || std::same_as<T, std::string> || std::same_as<T, bool> ||
                  detail::JsonInteger<T>) {
        return value;
    } else if constexpr (detail::JsonLeaf<T>) {
        return detail::write(value);
    } else if constexpr (detail::KeyedEnumeration<T>) {
        return detail::wrapped(caseName(value), Json::object());
    } else if constexpr (Enumeration<T>) {
        return std::string(caseName(value));
    } else if constexpr (detail::kIsOptional<T>) {
        return value ? toJson(*value) : Json();
    } else if constexpr (detail::kIsVector<T>) {
        Json::array_t array;
        array.reserve(value.size());
        for (const auto& element : value)
            array.push_back(toJson(element));
        return array;
    } else if constexpr (detail::kIsMap<T>) {
        Json::object_t object;
        object.reserve(value.size());
        for (const auto& [key, element] : value)
            object.emplace_back(key, toJson(element));
        return object;
    } else if constexpr (detail::HasJsonUnion<T>) {
        return detail::writeUnion(value, jsonUnion(JsonType<T>{}));
    } else {
        static_assert(detail::HasJsonFields<T>, "the type has no jsonFields or jsonUnion beside it");
        return detail::writeFields(value);
    }
}

} // namespace vocalith
