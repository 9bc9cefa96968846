#include "platform/x11/X11Connection.h"
#include "platform/x11/keyboard/X11Keyboard_p.h"
#include "platform/x11/windows/X11Windows_p.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>

namespace vocalith {
namespace {

constexpr const char* kNote = "_VOCALITH_LENT_KEYS"; ///< a window, then pairs of key code and symbol
/// Set on that window: its number alone may belong to somebody else by now.
constexpr const char* kLives = "_VOCALITH_TYPES";
/// Some programs take the lowest code for none.
constexpr unsigned kLowest = 9;
constexpr std::size_t kMost = 64;

} // namespace

X11SpareKeys::X11SpareKeys(X11Keyboard& keyboard, unsigned long window) : m_keyboard(keyboard), m_window(window)
{
    if (!m_keyboard.canPost())
        return;
    takeBackFromTheDead();
    const unsigned long yes = 1;
    auto& connection = m_keyboard.connection();
    XChangeProperty(connection.display(), m_window, connection.atom(kLives), XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&yes), 1);
}

X11SpareKeys::~X11SpareKeys()
{
    takeBack();
}

bool X11SpareKeys::isLent(KeyCode key) const
{
    const auto found = m_lent.find(key);
    auto* const map = m_keyboard.map();
    return found != m_lent.end() && XkbKeyNumSyms(map, key) > 0 && *XkbKeySymsPtr(map, key) == found->second;
}

std::vector<X11SpareKeys::KeyCode> X11SpareKeys::keys() const
{
    std::vector<KeyCode> found;
    auto* const map = m_keyboard.map();
    for (unsigned code = kLowest; map != nullptr && code <= map->max_key_code && found.size() < kMost; ++code) {
        const auto key = static_cast<KeyCode>(code);
        if ((XkbKeyNumSyms(map, code) == 0 && map->map->modmap[code] == 0) || isLent(key))
            found.push_back(key);
    }
    return found;
}

std::size_t X11SpareKeys::count() const
{
    const auto all = keys().size();
    return all == 0 ? 0 : all - 1;
}

X11SpareKeys::KeyCode X11SpareKeys::silentKey() const
{
    const auto all = keys();
    const auto silent = std::ranges::find_if_not(all, [&](KeyCode key) { return isLent(key); });
    return silent == all.end() ? KeyCode(0) : *silent;
}

void X11SpareKeys::lend(const std::vector<char32_t>& characters)
{
    Symbols wanted;
    std::vector<unsigned long> missing;
    for (const auto character : characters) {
        const unsigned long symbol = xkb_utf32_to_keysym(character);
        const auto lent = std::ranges::find_if(
            m_lent, [&](const auto& entry) { return entry.second == symbol && isLent(entry.first); });
        if (lent == m_lent.end())
            missing.push_back(symbol);
        else
            wanted.insert(*lent);
    }
    Symbols changed;
    auto next = missing.begin();
    for (const auto key : keys()) {
        if (next == missing.end())
            break;
        if (wanted.contains(key))
            continue;
        changed.emplace(key, *next++);
    }
    for (const auto& [key, symbol] : changed)
        m_lent.insert_or_assign(key, symbol);
    writeDown();
    change(changed);
}

void X11SpareKeys::takeBack()
{
    if (m_lent.empty() || m_keyboard.connection().isLost())
        return;
    const X11ServerGrab grab(m_keyboard.connection());
    m_keyboard.forgetMap();
    m_keyboard.refresh();
    Symbols cleared;
    for (const auto& [key, symbol] : m_lent) {
        if (m_keyboard.map() != nullptr && isLent(key))
            cleared.emplace(key, NoSymbol);
    }
    m_lent.clear();
    change(cleared);
    writeDown();
}

void X11SpareKeys::change(const Symbols& symbols)
{
    auto* const map = m_keyboard.map();
    if (symbols.empty() || map == nullptr)
        return;
    int type = XkbOneLevelIndex;
    for (const auto& [key, symbol] : symbols) {
        const int groups = symbol == NoSymbol ? 0 : 1;
        XkbChangeTypesOfKey(map, key, groups, XkbGroup1Mask, &type, nullptr);
        if (groups > 0)
            *XkbKeySymsPtr(map, key) = symbol;
    }
    XkbMapChangesRec changes{};
    changes.changed = XkbKeySymsMask;
    changes.first_key_sym = symbols.begin()->first;
    changes.num_key_syms = static_cast<unsigned char>(symbols.rbegin()->first - symbols.begin()->first + 1);
    auto& connection = m_keyboard.connection();
    X11ErrorTrap trap(connection);
    XkbChangeMap(connection.display(), map, &changes);
    m_keyboard.forgetMap();
}

void X11SpareKeys::writeDown() const
{
    auto& connection = m_keyboard.connection();
    const auto note = connection.atom(kNote);
    if (m_lent.empty()) {
        XDeleteProperty(connection.display(), connection.root(), note);
        return;
    }
    std::vector<unsigned long> values{m_window};
    for (const auto& [key, symbol] : m_lent)
        values.insert(values.end(), {key, symbol});
    XChangeProperty(connection.display(), connection.root(), note, XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(values.data()), static_cast<int>(values.size()));
}

void X11SpareKeys::takeBackFromTheDead()
{
    auto& connection = m_keyboard.connection();
    X11Windows windows(connection);
    const auto note = windows.numbers(connection.root(), kNote);
    if (note.empty() || !windows.numbers(note[0], kLives).empty())
        return; // nothing there, or it lives
    m_keyboard.refresh();
    for (std::size_t at = 1; at + 1 < note.size(); at += 2)
        m_lent.emplace(static_cast<KeyCode>(note[at]), note[at + 1]);
    takeBack();
}

} // namespace vocalith
