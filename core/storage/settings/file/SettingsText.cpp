#include "core/storage/settings/file/SettingsText.h"

#include "base/Text.h"

#include <optional>
#include <utility>

namespace vocalith {
namespace {

constexpr int kIndent = 2; // people read the file, and edit it
constexpr std::string_view kEntryBegin = "\n  \"";
constexpr std::string_view kSpace{" \t\r\n\0", 5}; // a power cut can leave zeros at the end

std::string_view withoutEnd(std::string_view text, std::string_view characters)
{
    return text.substr(0, text.find_last_not_of(characters) + 1);
}

/// The entry or entries that a piece of the text holds; the last one may be followed by the end of the object.
std::optional<Json> entryOf(std::string_view piece)
{
    const auto parsed = [](std::string_view members) -> std::optional<Json> {
        auto json = parseJson("{" + std::string(members) + "}");
        return json ? std::optional(std::move(*json)) : std::nullopt;
    };
    for (;;) {
        piece = withoutEnd(withoutEnd(piece, kSpace), ",");
        if (auto entry = parsed(piece))
            return entry;
        if (!piece.ends_with('}'))
            return std::nullopt;
        piece.remove_suffix(1);
    }
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
    for (auto begin = text.find(kEntryBegin); begin != std::string_view::npos;) {
        const auto end = text.find(kEntryBegin, begin + 1);
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
