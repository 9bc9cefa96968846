#pragma once

#include <cstdint>
#include <optional>
#include <vector>

struct _XDisplay;

namespace vocalith {

/// Which modifier bits of the X server stand for the modifier flags of shortcuts, on the keyboard as it is set up now.
/// A value; read again when the keyboard map has changed.
class X11ModifierMap {
public:
    /// One round trip, and more when Xlib does not have the keyboard map yet.
    static X11ModifierMap read(_XDisplay* display);

    /// Nothing when this keyboard has no such modifier, as for Fn, which stays within the keyboard.
    std::optional<unsigned> mask(std::uint64_t rawFlags) const;
    /// The bits of an event's state that are neither locks nor anything but modifiers.
    unsigned withoutLocks(unsigned state) const;
    /// Every way in which the locks can be on: a grab holds for one of them only.
    std::vector<unsigned> lockCombinations() const;

    bool operator==(const X11ModifierMap&) const = default;

private:
    unsigned m_option = 0;
    unsigned m_command = 0;
    unsigned m_numLock = 0;
    unsigned m_scrollLock = 0;
};

/// The flag of a modifier key in that layout group, or 0: a key that makes other characters (AltGr) is none.
std::uint64_t modifierFlag(_XDisplay* display, unsigned char keyCode, unsigned group);

} // namespace vocalith
