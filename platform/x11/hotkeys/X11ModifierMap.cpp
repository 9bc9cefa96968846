#include "platform/x11/hotkeys/X11ModifierMap.h"

#include "models/ModifierFlags.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <array>

namespace vocalith {
namespace {

constexpr unsigned kAllModifiers = 0xff;
constexpr int kModifiers = 8;

} // namespace

X11ModifierMap X11ModifierMap::read(_XDisplay* display)
{
    X11ModifierMap map;
    XModifierKeymap* const keys = XGetModifierMapping(display);
    if (keys == nullptr)
        return map;
    unsigned meta = 0;
    for (int modifier = Mod1MapIndex; modifier < kModifiers; ++modifier) {
        for (int i = 0; i < keys->max_keypermod; ++i) {
            const KeyCode code = keys->modifiermap[modifier * keys->max_keypermod + i];
            const unsigned bit = 1U << unsigned(modifier);
            switch (code == 0 ? NoSymbol : XkbKeycodeToKeysym(display, code, 0, 0)) {
            case XK_Alt_L:
            case XK_Alt_R: map.m_option |= bit; break;
            case XK_Meta_L:
            case XK_Meta_R: meta |= bit; break;
            case XK_Super_L:
            case XK_Super_R: map.m_command |= bit; break;
            case XK_Num_Lock: map.m_numLock |= bit; break;
            case XK_Scroll_Lock: map.m_scrollLock |= bit; break;
            default: break;
            }
        }
    }
    XFreeModifiermap(keys);
    if (map.m_option == 0)
        map.m_option = meta;
    return map;
}

std::optional<unsigned> X11ModifierMap::mask(std::uint64_t rawFlags) const
{
    struct Pair {
        std::uint64_t flag;
        unsigned bits;
    };
    const std::array<Pair, 5> pairs{{{modifier_flags::shift, ShiftMask},
                                     {modifier_flags::control, ControlMask},
                                     {modifier_flags::option, m_option},
                                     {modifier_flags::command, m_command},
                                     {modifier_flags::function, 0}}};
    unsigned bits = 0;
    for (const auto& pair : pairs) {
        if ((rawFlags & pair.flag) == 0)
            continue;
        if (pair.bits == 0)
            return std::nullopt;
        bits |= pair.bits;
    }
    return bits;
}

unsigned X11ModifierMap::withoutLocks(unsigned state) const
{
    return state & kAllModifiers & ~(LockMask | m_numLock | m_scrollLock);
}

std::vector<unsigned> X11ModifierMap::lockCombinations() const
{
    std::vector<unsigned> combinations{0};
    for (const unsigned lock : {unsigned(LockMask), m_numLock, m_scrollLock}) {
        if (lock == 0)
            continue;
        for (std::size_t i = 0, count = combinations.size(); i < count; ++i)
            combinations.push_back(combinations[i] | lock);
    }
    return combinations;
}

std::uint64_t modifierFlag(_XDisplay* display, unsigned char keyCode, unsigned group)
{
    KeySym symbol = XkbKeycodeToKeysym(display, keyCode, int(group), 0);
    if (symbol == NoSymbol) // the key is the same in all groups
        symbol = XkbKeycodeToKeysym(display, keyCode, 0, 0);
    switch (symbol) {
    case XK_Shift_L:
    case XK_Shift_R: return modifier_flags::shift;
    case XK_Control_L:
    case XK_Control_R: return modifier_flags::control;
    case XK_Alt_L:
    case XK_Alt_R:
    case XK_Meta_L:
    case XK_Meta_R: return modifier_flags::option;
    case XK_Super_L:
    case XK_Super_R: return modifier_flags::command;
    default: return 0;
    }
}

} // namespace vocalith
