#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// How a character is typed.
struct KeyStroke {
    std::uint32_t inputEventCode = 0; ///< of the key
    bool hasShift = false;
    bool operator==(const KeyStroke&) const = default;
};

/// The keymap of a keyboard of our own: the US layout, whose characters are typed as everybody does, and keys that no
/// keyboard has for whatever else a text needs. Made with libxkbcommon and the machine's keyboard descriptions; without
/// those it has only keys of its own.
class WaylandKeymap {
public:
    /// How many characters beyond the US layout one keymap holds.
    static constexpr std::size_t mostExtraCharacters = 56;

    WaylandKeymap();

    /// Whether the layout has the character, so that no keymap needs to be made for it.
    bool hasCharacter(char32_t character) const { return m_strokes.contains(character); }
    /// Whether the character can be had as a key at all; control characters other than tabulator and line feed cannot.
    static bool isTypable(char32_t character);
    bool hasKey(std::uint32_t inputEventCode) const { return m_symbols.contains(inputEventCode); }

    /// The key for the character in the keymap that `text(extra)` makes.
    std::optional<KeyStroke> stroke(char32_t character, const std::u32string& extra) const;
    /// In the text form of xkbcommon (XKB_KEYMAP_FORMAT_TEXT_V1).
    std::string text(const std::u32string& extra) const;

private:
    std::map<std::uint32_t, std::vector<std::uint32_t>> m_symbols; ///< of the layout's keys, without and with Shift
    std::map<char32_t, KeyStroke> m_strokes;
};

} // namespace vocalith
