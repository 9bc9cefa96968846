#include "platform/x11/keyboard/X11HeldModifiers_p.h"

#include <X11/X.h>

#include <algorithm>

namespace vocalith {

X11HeldModifiers::X11HeldModifiers(X11Keyboard& keyboard)
    : m_keyboard(keyboard), m_wasCapsLocked(keyboard.isCapsLocked())
{
    if (m_wasCapsLocked)
        keyboard.lockCaps(false);
    if (!keyboard.isModifierHeld())
        return;
    m_lifted = keyboard.heldModifierKeys();
    const auto control = keyboard.modifierKey(ControlMask);
    keyboard.post(control, true);
    for (const auto key : m_lifted)
        keyboard.post(key, false);
    keyboard.post(control, false);
}

X11HeldModifiers::~X11HeldModifiers()
{
    if (m_wasCapsLocked)
        m_keyboard.lockCaps(true);
    if (m_lifted.empty())
        return;
    for (const auto key : m_lifted)
        m_keyboard.post(key, true);
    const auto control = m_keyboard.modifierKey(ControlMask);
    if (std::ranges::find(m_lifted, control) != m_lifted.end())
        return; // it is down again, and another tap would lift it
    m_keyboard.post(control, true);
    m_keyboard.post(control, false);
}

} // namespace vocalith
