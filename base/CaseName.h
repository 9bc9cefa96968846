#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

namespace vocalith {

template <class E>
concept Enumeration = std::is_enum_v<E>;

namespace detail {

/// The enumerator's own name, without the underscore that keeps it apart from a keyword; empty when the value has none.
template <auto Value>
constexpr auto enumeratorName()
{
    // "… [with auto Value = vocalith::ActionMode::autoInsert]", or "… = (vocalith::ActionMode)4]"
    std::string_view name(__PRETTY_FUNCTION__, sizeof __PRETTY_FUNCTION__ - 2);
    name.remove_prefix(name.find_last_of(":)") + 1);
    if (name.front() >= '0' && name.front() <= '9')
        return std::string_view();
    if (name.back() == '_')
        name.remove_suffix(1);
    return name;
}

template <Enumeration E, std::size_t Count = 0>
constexpr std::size_t countCases()
{
    if constexpr (enumeratorName<static_cast<E>(Count)>().empty())
        return Count;
    else
        return countCases<E, Count + 1>();
}

template <Enumeration E>
inline constexpr auto kCaseNames = []<std::size_t... Index>(std::index_sequence<Index...>)
{
    return std::array{enumeratorName<static_cast<E>(Index)>()...};
}
(std::make_index_sequence<countCases<E>()>());

} // namespace detail

/// The enumerator's own name: `autoInsert`, and `default` for `default_`. It is the stored form of closed sets, so
/// renaming an enumerator changes what is stored. For scoped enumerations counted from zero without gaps.
template <Enumeration E>
constexpr std::string_view caseName(E value)
{
    const auto index = static_cast<std::size_t>(value);
    return index < detail::kCaseNames<E>.size() ? detail::kCaseNames<E>[index] : std::string_view();
}

/// The case with that name, when there is one.
template <Enumeration E>
constexpr std::optional<E> caseNamed(std::string_view name)
{
    for (std::size_t i = 0; i < detail::kCaseNames<E>.size(); ++i) {
        if (detail::kCaseNames<E>[i] == name)
            return static_cast<E>(i);
    }
    return std::nullopt;
}

/// Every case, in the order of the declaration.
template <Enumeration E>
inline constexpr auto kAllCases = []<std::size_t... Index>(std::index_sequence<Index...>)
{
    return std::array{static_cast<E>(Index)...};
}
(std::make_index_sequence<detail::kCaseNames<E>.size()>());

} // namespace vocalith
