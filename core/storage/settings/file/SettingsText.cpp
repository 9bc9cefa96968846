#include "core/storage/settings/file/SettingsText.h"

#include "base/Text.h"

#include <optional>
#include <utility>

namespace vocalith {
namespace {

constexpr int kIndent = 2;                         // people read the file, and edit it
constexpr std::string_view kSpace{" \t\r\n\0", 5}; // a power cut can leave zeros at the end

std::string_view withoutEnd(std::string_view text, std::string_view characters)
{
    return text.substr(0, text.find_last_not_of(characters) + 1);
}

/// What stands before every entry: the least indentation, since whoever formatted the file anew may have chosen
/// another.
std::string_view entryBegin(std::string_view text)
{
    std::string_view least;
    for (auto line = text.find('\n'); line != std::string_view::npos; line = text.find('\n', line + 1)) {
        const auto word = text.find_first_not_of(" \t", line + 1);
        if (word == std::string_view::npos || text[word] != '"' || word == line + 1)
            continue;
        const auto begin = text.substr(line, word - line + 1);
        if (least.empty() || begin.size() < least.size())
            least = begin;
    }
    return least;
}

/// The entry or entries that a piece of the text holds; the last one may be followed by the end of the object.
std::optional<Json> entryOf(std::string_view piece)
{
    const auto parsed = [](std::string_view members) -> std::optional<Json> {
        auto json = parseJson("{" + std::string(members) + "}");
        return json ? std::optional(std::move(*json)) : std::nullopt;
    };
    constexpr int kMostEnds = 3; // the object's, and what slipped in
    for (int ends = 0; ends <= kMostEnds; ++ends) {
        piece = withoutEnd(withoutEnd(piece, kSpace), ",");
        if (auto entry = parsed(piece))
            return entry;
        if (!piece.ends_with('}'))
            return std::nullopt;
        piece.remove_suffix(1);
    }
    return std::nullopt;
}

std::optional<std::string> keyOf(std::string_view piece)
{
    const auto begin = piece.find('"');
    const auto end = piece.find('"', begin + 1);
    if (begin == std::string_view::npos || end == std::string_view::npos)
        return std::nullopt;
    const auto key = parseJson(piece.substr(begin, end - begin + 1));
    return key && key->is_string() ? std::optional(key->get<std::string>()) : std::nullopt;
}

SettingsText salvaged(std::string_view text)
{
    SettingsText found;
    found.isDamaged = true;
    const auto separator = entryBegin(text);
    for (auto begin = separator.empty() ? std::string_view::npos : text.find(separator);
         begin != std::string_view::npos;) {
        const auto end = text.find(separator, begin + 1);
        const auto piece = text.substr(begin, end == std::string_view::npos ? end : end - begin);
        begin = end;
        if (const auto entry = entryOf(piece)) {
            for (const auto& [key, value] : entry->items())
                found.entries[key] = value;
        } else if (auto key = keyOf(piece)) {
            found.lost.push_back(std::move(*key));
        }
    }
    return found;
}

} // namespace

SettingsText readSettingsText(std::string_view text)
{
    if (trimmedView(text).empty())
        return {};
    auto parsed = parseJson(text);
    if (!parsed || !parsed->is_object())
        return salvaged(text);
    return {std::move(*parsed), false, {}};
}

std::string settingsText(const Json& entries)
{
    return dumpJson(entries, kIndent) + '\n';
}

} // namespace vocalith
