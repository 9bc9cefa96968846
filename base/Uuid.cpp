#include "base/Uuid.h"

#include <cstring>
#include <random>

namespace vocalith {
namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";

bool isDash(std::size_t position)
{
    return position == 8 || position == 13 || position == 18 || position == 23;
}

std::optional<std::uint8_t> nibble(char c)
{
    if (c >= '0' && c <= '9')
        return static_cast<std::uint8_t>(c - '0');
    const char upper = static_cast<char>(c & ~0x20);
    if (upper >= 'A' && upper <= 'F')
        return static_cast<std::uint8_t>(upper - 'A' + 10);
    return std::nullopt;
}

} // namespace

Uuid Uuid::random()
{
    std::random_device source;
    Uuid id;
    for (std::size_t i = 0; i < id.bytes.size(); i += sizeof(std::uint32_t)) {
        const std::uint32_t word = source();
        std::memcpy(id.bytes.data() + i, &word, sizeof word);
    }
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0F) | 0x40);
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
    return id;
}

std::optional<Uuid> Uuid::parse(std::string_view text)
{
    if (text.size() != 36)
        return std::nullopt;
    Uuid id;
    std::size_t digits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isDash(i)) {
            if (text[i] != '-')
                return std::nullopt;
            continue;
        }
        const auto value = nibble(text[i]);
        if (!value)
            return std::nullopt;
        auto& byte = id.bytes[digits / 2];
        byte = static_cast<std::uint8_t>(byte << 4 | *value);
        ++digits;
    }
    return id;
}

std::string Uuid::toString() const
{
    std::string text;
    text.reserve(36);
    for (const auto byte : bytes) {
        if (isDash(text.size()))
            text += '-';
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0x0F];
    }
    return text;
}

} // namespace vocalith

std::size_t std::hash<vocalith::Uuid>::operator()(const vocalith::Uuid& id) const noexcept
{
    std::size_t value;
    std::memcpy(&value, id.bytes.data(), sizeof value);
    return value;
}
