#include "platform/wayland/keyboard/WaylandKeymap_p.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <linux/input-event-codes.h>
#include <memory>
#include <string_view>
#include <xkbcommon/xkbcommon.h>

namespace vocalith {
namespace {

constexpr std::uint32_t kOffset = 8; // from an input event code to a key code of XKB, in which programs think
constexpr std::uint32_t kLastCode = 255 - kOffset;
constexpr std::uint32_t kFirstExtra = 192; // the last 56 codes, of which Linux knows a few rare media keys

constexpr std::array<std::string_view, 5> kModifiers{
    "Shift { Shift_L, Shift_R }", "Lock { Caps_Lock }",        "Control { Control_L, Control_R }",
    "Mod1 { Alt_L, Alt_R }",      "Mod4 { Super_L, Super_R }",
};

std::string nameOf(xkb_keysym_t symbol)
{
    std::array<char, 64> name{};
    xkb_keysym_get_name(symbol, name.data(), name.size());
    return name.data();
}

struct Unref {
    void operator()(xkb_context* context) const { xkb_context_unref(context); }
    void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
};

std::unique_ptr<xkb_keymap, Unref> usLayout()
{
    const std::unique_ptr<xkb_context, Unref> context(
        xkb_context_new(static_cast<xkb_context_flags>(XKB_CONTEXT_NO_ENVIRONMENT_NAMES)));
    if (!context)
        return nullptr;
    const xkb_rule_names names{.rules = "evdev", .model = "pc105", .layout = "us", .variant = "", .options = ""};
    return std::unique_ptr<xkb_keymap, Unref>(
        xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
}

/// The symbols of a key without and with Shift; one where Shift changes nothing.
std::vector<std::uint32_t> symbolsOf(xkb_keymap* keymap, std::uint32_t code)
{
    std::vector<std::uint32_t> symbols;
    for (xkb_level_index_t level = 0; level < 2; ++level) {
        const xkb_keysym_t* found = nullptr;
        if (xkb_keymap_key_get_syms_by_level(keymap, code + kOffset, 0, level, &found) == 1)
            symbols.push_back(*found);
    }
    // The keypad gives digits whatever its lock says.
    if (symbols.size() == 2 && nameOf(symbols[0]).starts_with("KP_"))
        symbols.erase(symbols.begin());
    if (symbols.size() == 2 && symbols[0] == symbols[1])
        symbols.pop_back();
    return symbols;
}

} // namespace

WaylandKeymap::WaylandKeymap()
{
    m_strokes[U'\n'] = {KEY_ENTER, false};
    m_strokes[U'\t'] = {KEY_TAB, false};
    m_symbols[KEY_ENTER] = {XKB_KEY_Return};
    m_symbols[KEY_TAB] = {XKB_KEY_Tab};
    const auto layout = usLayout();
    for (std::uint32_t code = 1; layout && code < kFirstExtra; ++code) {
        auto symbols = symbolsOf(layout.get(), code);
        if (symbols.empty())
            continue;
        for (std::size_t level = 0; level < symbols.size(); ++level) {
            const char32_t character = xkb_keysym_to_utf32(symbols[level]);
            const bool isOfMainBlock = code <= KEY_SPACE;
            if (isOfMainBlock && character >= U' ' && character < U'\x7f')
                m_strokes.try_emplace(character, KeyStroke{code, level > 0});
        }
        m_symbols[code] = std::move(symbols);
    }
}

bool WaylandKeymap::isTypable(char32_t character)
{
    if (character == U'\n' || character == U'\t')
        return true;
    const bool isControl = character < U' ' || (character >= U'\x7f' && character < U'\xa0');
    return !isControl && xkb_utf32_to_keysym(character) != XKB_KEY_NoSymbol;
}

std::optional<KeyStroke> WaylandKeymap::stroke(char32_t character, const std::u32string& extra) const
{
    if (const auto found = m_strokes.find(character); found != m_strokes.end())
        return found->second;
    const auto place = extra.find(character);
    if (place == std::u32string::npos)
        return std::nullopt;
    return KeyStroke{kFirstExtra + static_cast<std::uint32_t>(place), false};
}

std::string WaylandKeymap::text(const std::u32string& extra) const
{
    static_assert(kFirstExtra + mostExtraCharacters - 1 == kLastCode);
    std::string names;
    std::string keys;
    const auto addKey = [&](std::uint32_t code, const std::string& symbols) {
        names += fmt::format("<K{}>={};", code, code + kOffset);
        keys += fmt::format("key <K{}> {{[{}]}};\n", code, symbols);
    };
    for (const auto& [code, symbols] : m_symbols) {
        std::string list = nameOf(symbols.front());
        if (symbols.size() > 1)
            list += "," + nameOf(symbols.back());
        addKey(code, list);
    }
    for (std::size_t place = 0; place < extra.size(); ++place)
        addKey(kFirstExtra + static_cast<std::uint32_t>(place), nameOf(xkb_utf32_to_keysym(extra[place])));
    std::string modifiers;
    for (const auto& modifier : kModifiers)
        modifiers += fmt::format("modifier_map {};\n", modifier);
    return fmt::format("xkb_keymap {{\nxkb_keycodes \"vocalith\" {{\nminimum = {}; maximum = 255;\n{}\n}};\n"
                       "xkb_types \"vocalith\" {{ include \"complete\" }};\n"
                       "xkb_compatibility \"vocalith\" {{ include \"complete\" }};\n"
                       "xkb_symbols \"vocalith\" {{\n{}{}}};\n}};\n",
                       kOffset, names, keys, modifiers);
}

} // namespace vocalith
