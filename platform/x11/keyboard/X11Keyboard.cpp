#include "platform/x11/X11Connection.h"
#include "platform/x11/keyboard/X11Keyboard_p.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <xkbcommon/xkbcommon.h>

#include <array>

namespace vocalith {
namespace {

/// What the symbol types, or 0. Not what the keypad types: its keys mean other things to some applications.
char32_t characterOf(KeySym symbol)
{
    if (symbol == XK_Return)
        return U'\n';
    if (symbol == XK_Tab)
        return U'\t';
    if (symbol >= XK_KP_Space && symbol <= XK_KP_9)
        return 0;
    const auto character = static_cast<char32_t>(xkb_keysym_to_utf32(static_cast<xkb_keysym_t>(symbol)));
    return character < U' ' || character == 0x7f ? 0 : character;
}

} // namespace

X11ServerGrab::X11ServerGrab(X11Connection& connection) : m_connection(connection)
{
    XGrabServer(m_connection.display());
}

X11ServerGrab::~X11ServerGrab()
{
    XUngrabServer(m_connection.display());
    XFlush(m_connection.display());
}

void X11Keyboard::MapFreed::operator()(_XkbDesc* map) const
{
    XkbFreeKeyboard(map, 0, True);
}

X11Keyboard::X11Keyboard(X11Connection& connection)
    : m_connection(connection), m_events(connection.event.subscribe([this](const XEvent& event) { handle(event); }))
{
    auto* const display = m_connection.display();
    int first = 0;
    int second = 0;
    int major = XkbMajorVersion;
    int minor = XkbMinorVersion;
    const bool hasMap = XkbQueryExtension(display, &first, &m_event, &second, &major, &minor);
    m_canPost = hasMap && XTestQueryExtension(display, &first, &second, &major, &minor);
    if (!m_canPost)
        return;
    XTestGrabControl(display, True); // keys arrive although another client has grabbed the server
    XkbSelectEvents(display, XkbUseCoreKbd, XkbNewKeyboardNotifyMask | XkbMapNotifyMask,
                    XkbNewKeyboardNotifyMask | XkbMapNotifyMask);
    XkbSelectEventDetails(display, XkbUseCoreKbd, XkbStateNotify, XkbModifierBaseMask, XkbModifierBaseMask);
}

X11Keyboard::~X11Keyboard() = default;

void X11Keyboard::handle(const _XEvent& event)
{
    if (!m_canPost || event.type != m_event)
        return;
    const auto& change = reinterpret_cast<const XkbEvent&>(event);
    if (change.any.xkb_type == XkbMapNotify || change.any.xkb_type == XkbNewKeyboardNotify) {
        forgetMap();
        ++m_mapGeneration;
    }
    if (change.any.xkb_type == XkbStateNotify) {
        m_held = change.state.base_mods;
        modifiersChanged.emit();
    }
}

void X11Keyboard::refresh()
{
    auto* const display = m_connection.display();
    XkbStateRec state{};
    if (XkbGetState(display, XkbUseCoreKbd, &state) != Success || m_connection.isLost())
        return;
    // The answer came after all events before it; those about the keyboard are not left until the loop runs.
    XEvent event;
    while (XCheckTypedEvent(display, m_event, &event))
        handle(event);
    m_held = state.base_mods;
    if (m_group != state.group || m_locked != state.locked_mods)
        m_strokesAreKnown = false;
    m_group = state.group;
    m_locked = state.locked_mods;
    if (!m_mapIsKnown)
        readMap();
}

void X11Keyboard::readMap()
{
    m_map.reset(XkbGetMap(m_connection.display(), XkbAllClientInfoMask, XkbUseCoreKbd));
    m_mapIsKnown = m_map != nullptr;
    m_strokesAreKnown = false;
}

unsigned X11Keyboard::heldModifiers() const
{
    return m_held & ~static_cast<unsigned>(LockMask);
}

std::vector<X11Keyboard::KeyCode> X11Keyboard::heldModifierKeys() const
{
    std::array<char, 32> keys{};
    XQueryKeymap(m_connection.display(), keys.data());
    std::vector<KeyCode> held;
    for (unsigned code = 8; m_map != nullptr && code < 256; ++code) {
        const bool isDown = (static_cast<unsigned char>(keys[code / 8]) >> (code % 8) & 1U) != 0;
        if (isDown && isModifier(static_cast<KeyCode>(code)))
            held.push_back(static_cast<KeyCode>(code));
    }
    return held;
}

bool X11Keyboard::isModifier(KeyCode key) const
{
    return m_map != nullptr && (m_map->map->modmap[key] & ~LockMask) != 0;
}

X11Keyboard::KeyCode X11Keyboard::modifierKey(unsigned mask) const
{
    for (unsigned code = 8; m_map != nullptr && code < 256; ++code) {
        if ((m_map->map->modmap[code] & mask) != 0 && XkbKeyNumSyms(m_map.get(), code) > 0)
            return static_cast<KeyCode>(code);
    }
    return 0;
}

unsigned long X11Keyboard::symbol(KeyCode key, unsigned modifiers) const
{
    KeySym found = NoSymbol;
    unsigned consumed = 0;
    XkbTranslateKeyCode(m_map.get(), key, XkbBuildCoreState(modifiers, m_group), &consumed, &found);
    return found;
}

std::optional<X11Keyboard::KeyCode> X11Keyboard::key(char32_t character) const
{
    for (unsigned code = 8; m_map != nullptr && code < 256; ++code) {
        if (characterOf(symbol(static_cast<KeyCode>(code), 0)) == character)
            return static_cast<KeyCode>(code);
    }
    return std::nullopt;
}

void X11Keyboard::findStrokes()
{
    m_strokes.clear();
    for (const bool hasShift : {false, true}) {
        const unsigned modifiers = (m_locked & ~static_cast<unsigned>(LockMask)) | (hasShift ? ShiftMask : 0U);
        for (unsigned code = m_map->min_key_code; code <= m_map->max_key_code; ++code) {
            const auto character = characterOf(symbol(static_cast<KeyCode>(code), modifiers));
            if (character != 0)
                m_strokes.emplace(character, Stroke{static_cast<KeyCode>(code), hasShift});
        }
    }
    m_strokesAreKnown = true;
}

std::optional<X11Keyboard::Stroke> X11Keyboard::stroke(char32_t character)
{
    if (m_map == nullptr)
        return std::nullopt;
    if (!m_strokesAreKnown)
        findStrokes();
    const auto found = m_strokes.find(character);
    return found == m_strokes.end() ? std::nullopt : std::optional(found->second);
}

bool X11Keyboard::isCapsLocked() const
{
    return (m_locked & LockMask) != 0;
}

void X11Keyboard::lockCaps(bool isLocked) const
{
    XkbLockModifiers(m_connection.display(), XkbUseCoreKbd, LockMask, isLocked ? LockMask : 0);
}

void X11Keyboard::post(KeyCode key, bool isDown) const
{
    XTestFakeKeyEvent(m_connection.display(), key, isDown ? True : False, CurrentTime);
}

} // namespace vocalith
