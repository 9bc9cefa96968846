#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vocalith {

/// A 128-bit identity (RFC 9562). The default value is the nil UUID.
struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    /// A new version 4 UUID from the system's random source.
    static Uuid random();
    /// Reads the 36-character form in upper or lower case; anything else is no UUID.
    static std::optional<Uuid> parse(std::string_view text);

    /// The 36-character form in upper case.
    std::string toString() const;
    bool isNil() const { return *this == Uuid{}; }

    auto operator<=>(const Uuid&) const = default;
};

} // namespace vocalith

template <>
struct std::hash<vocalith::Uuid> {
    std::size_t operator()(const vocalith::Uuid& id) const noexcept;
};
