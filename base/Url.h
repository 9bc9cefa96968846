#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vocalith {

/// Every byte but letters, digits, "-", ".", "_", "~" and those in `alsoKept` as %XX (RFC 3986).
std::string percentEncoded(std::string_view text, std::string_view alsoKept = {});

/// The bytes that the text stands for, or nothing when a "%" is not followed by two hexadecimal digits.
std::optional<std::string> percentDecoded(std::string_view text);

/// "file:///home/a%20b.wav". A relative path is taken from the current folder.
std::string fileUrl(const std::filesystem::path& path);

/// The local path that a file URL names (RFC 8089), or nothing when it is no file URL of this machine.
std::optional<std::filesystem::path> filePath(std::string_view url);

} // namespace vocalith
