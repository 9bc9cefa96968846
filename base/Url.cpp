#include "base/Url.h"

#include "base/Text.h"

#include <algorithm>
#include <charconv>

namespace vocalith {
namespace {

constexpr std::string_view kHexadecimal = "0123456789ABCDEF";

bool isUnreserved(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
           c == '_' || c == '~';
}

/// Takes `prefix`, in any case, off the front.
bool takePrefix(std::string_view& text, std::string_view prefix)
{
    const bool starts = text.size() >= prefix.size() &&
                        std::equal(prefix.begin(), prefix.end(), text.begin(),
                                   [](char expected, char actual) { return asciiLower(actual) == expected; });
    if (starts)
        text.remove_prefix(prefix.size());
    return starts;
}

} // namespace

std::string percentEncoded(std::string_view text, std::string_view alsoKept)
{
    std::string encoded;
    encoded.reserve(text.size());
    for (const char c : text) {
        if (isUnreserved(c) || alsoKept.find(c) != std::string_view::npos) {
            encoded += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        encoded += '%';
        encoded += kHexadecimal[byte >> 4];
        encoded += kHexadecimal[byte & 0x0F];
    }
    return encoded;
}

std::optional<std::string> percentDecoded(std::string_view text)
{
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        const auto digits = text.substr(i + 1, 2);
        unsigned char byte = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
        if (digits.size() != 2 || error != std::errc() || end != digits.data() + digits.size())
            return std::nullopt;
        decoded += static_cast<char>(byte);
        i += 2;
    }
    return decoded;
}

std::string fileUrl(const std::filesystem::path& path)
{
    std::error_code error;
    const auto absolute = std::filesystem::absolute(path, error);
    return "file://" + percentEncoded((error ? path : absolute).native(), "/");
}

std::optional<std::filesystem::path> filePath(std::string_view url)
{
    if (!takePrefix(url, "file:"))
        return std::nullopt;
    if (url.starts_with("//")) {
        url.remove_prefix(2);
        takePrefix(url, "localhost");
    }
    const auto path = percentDecoded(url.substr(0, url.find_first_of("?#")));
    if (!path || !path->starts_with('/') || path->find('\0') != std::string::npos)
        return std::nullopt;
    return std::filesystem::path(*path);
}

} // namespace vocalith
