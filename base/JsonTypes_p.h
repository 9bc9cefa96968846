#pragma once

#include "base/CaseName.h"
#include "base/Data.h"
#include "base/Date.h"
#include "base/JsonFields.h"
#include "base/Uuid.h"

#include <concepts>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// Which types base/Json.h can store, and how it tells them apart.
namespace vocalith::detail {

template <class T>
concept HasJsonFields = requires
{
    jsonFields(JsonType<T>{});
};
template <class T>
concept HasJsonUnion = requires
{
    jsonUnion(JsonType<T>{});
};
template <class T>
concept HasJsonOlderForm = requires
{
    jsonOlderForm(JsonType<T>{});
};
template <class T>
concept KeyedEnumeration = Enumeration<T> && requires
{
    requires jsonKeyed(JsonType<T>{});
};
template <class T>
concept JsonInteger = std::integral<T> && !std::same_as<T, bool>;

template <class T>
inline constexpr bool kIsOptional = false;
template <class T>
inline constexpr bool kIsOptional<std::optional<T>> = true;
template <class T>
inline constexpr bool kIsVector = false;
template <class T>
inline constexpr bool kIsVector<std::vector<T>> = true;
template <class T>
inline constexpr bool kIsMap = false;
template <class T>
inline constexpr bool kIsMap<std::map<std::string, T>> = true;

template <class T>
concept JsonLeaf =
    std::same_as<T, std::string> || std::same_as<T, bool> || std::same_as<T, double> || std::same_as<T, float> ||
    std::same_as<T, Uuid> || std::same_as<T, Date> || std::same_as<T, Data> || std::same_as<T, std::filesystem::path>;

inline constexpr std::string_view kUnlabelled = "_0";

} // namespace vocalith::detail
