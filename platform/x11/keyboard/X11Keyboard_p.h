#pragma once

#include "base/Observable.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

struct _XkbDesc;
union _XEvent;

namespace vocalith {

class X11Connection;

/// Holds the X server for this client alone, so that nobody changes the keyboard between a look at it and what follows.
/// For a millisecond or two, never across an await.
class X11ServerGrab {
public:
    explicit X11ServerGrab(X11Connection& connection);
    ~X11ServerGrab();
    X11ServerGrab(const X11ServerGrab&) = delete;
    X11ServerGrab& operator=(const X11ServerGrab&) = delete;

private:
    X11Connection& m_connection;
};

/// The keyboard as the X server has it, and synthetic keys on it (XTest). The connection is its owner's alone. Main
/// thread.
class X11Keyboard {
public:
    using KeyCode = unsigned char;
    struct Stroke {
        KeyCode key = 0;
        bool hasShift = false;
        bool operator==(const Stroke&) const = default;
    };

    explicit X11Keyboard(X11Connection& connection);
    ~X11Keyboard();

    X11Connection& connection() const { return m_connection; }
    bool canPost() const { return m_canPost; }

    /// Brings everything below up to date: one round trip, and another where the map has changed.
    void refresh();
    /// Whether a modifier key is down, one that locks aside.
    bool isModifierHeld() const { return heldModifiers() != 0; }
    unsigned heldModifiers() const; ///< as a mask of modifiers
    /// The keys that hold them. One round trip.
    std::vector<KeyCode> heldModifierKeys() const;

    /// How to type the character under the layout that is active, while Caps Lock is off.
    std::optional<Stroke> stroke(char32_t character);
    /// The key that has the character under the layout that is active, whatever is locked.
    std::optional<KeyCode> key(char32_t character) const;
    /// A key that works as the modifier (ShiftMask, ControlMask, ...); 0 when there is none.
    KeyCode modifierKey(unsigned mask) const;
    bool isModifier(KeyCode key) const;

    void post(KeyCode key, bool isDown) const;
    bool isCapsLocked() const;
    void lockCaps(bool isLocked) const;

    /// The map itself, for those who change it.
    _XkbDesc* map() const { return m_map.get(); }
    /// Somebody changed it, or this program did: the next `refresh` reads it again.
    void forgetMap() { m_mapIsKnown = false; }
    /// Rises with every change of the map.
    int mapGeneration() const { return m_mapGeneration; }
    Signal<> modifiersChanged;

private:
    struct MapFreed {
        void operator()(_XkbDesc* map) const;
    };

    void handle(const _XEvent& event);
    void readMap();
    void findStrokes();
    unsigned long symbol(KeyCode key, unsigned modifiers) const;

    X11Connection& m_connection;
    bool m_canPost = false;
    int m_event = 0;
    bool m_mapIsKnown = false;
    int m_mapGeneration = 0;
    std::unique_ptr<_XkbDesc, MapFreed> m_map;
    unsigned m_group = 0;
    unsigned m_locked = 0;
    unsigned m_held = 0;
    bool m_strokesAreKnown = false;
    std::unordered_map<char32_t, Stroke> m_strokes;
    Subscription m_events;
};

/// Keys without a meaning of their own that are lent to characters which the keyboard does not have. What is lent is
/// written on the root window, so that the next start can take it back should this program be killed. Main thread.
class X11SpareKeys {
public:
    using KeyCode = X11Keyboard::KeyCode;

    /// Takes back what a program that has ended left behind. `window` stands for this program.
    X11SpareKeys(X11Keyboard& keyboard, unsigned long window);
    ~X11SpareKeys();

    /// The number of keys that can be lent. Fresh after the keyboard's `refresh`.
    std::size_t count() const;
    /// A key that is never lent and types nothing; 0 when there is none.
    KeyCode silentKey() const;
    /// Lends a key to each of the characters, at most `count`; those that already have one keep it. The server is
    /// grabbed.
    void lend(const std::vector<char32_t>& characters);
    /// Takes all keys back that still have what they were given.
    void takeBack();
    bool isLent(KeyCode key) const;

private:
    using Symbols = std::map<KeyCode, unsigned long>;

    std::vector<KeyCode> keys() const;
    void change(const Symbols& symbols);
    void writeDown() const;
    void takeBackFromTheDead();

    X11Keyboard& m_keyboard;
    const unsigned long m_window;
    Symbols m_lent;
};

} // namespace vocalith
