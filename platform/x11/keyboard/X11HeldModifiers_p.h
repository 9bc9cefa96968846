#pragma once

#include "platform/x11/keyboard/X11Keyboard_p.h"

#include <vector>

namespace vocalith {

/// Lifts the modifier keys that the user holds for as long as it lives, presses them again, and takes Caps Lock off
/// meanwhile: some toolkits make capitals even of keys that have none. Both times that keys are lifted or pressed
/// Control is tapped: an application that sees Alt or Super come up with nothing in between would open a menu. Main
/// thread; the keyboard has been refreshed.
class X11HeldModifiers {
public:
    explicit X11HeldModifiers(X11Keyboard& keyboard);
    ~X11HeldModifiers();
    X11HeldModifiers(const X11HeldModifiers&) = delete;
    X11HeldModifiers& operator=(const X11HeldModifiers&) = delete;

private:
    X11Keyboard& m_keyboard;
    std::vector<X11Keyboard::KeyCode> m_lifted;
    bool m_wasCapsLocked;
};

} // namespace vocalith
