#pragma once

#include "platform/wayland/WaylandConnection.h"
#include "platform/wayland/keyboard/WaylandKeymap_p.h"

#include <string>

struct zwp_virtual_keyboard_manager_v1;
struct zwp_virtual_keyboard_v1;

namespace vocalith {

/// One keyboard of virtual-keyboard-unstable-v1 with a keymap of our own. It belongs to a WaylandKeyEvents and lives as
/// long as that: programs lose the first keys of a keyboard that has just appeared. What it does is sent by the next
/// flush of the connection.
class WaylandVirtualKeyboard {
public:
    explicit WaylandVirtualKeyboard(WaylandConnection& connection);
    ~WaylandVirtualKeyboard();
    WaylandVirtualKeyboard(const WaylandVirtualKeyboard&) = delete;
    WaylandVirtualKeyboard& operator=(const WaylandVirtualKeyboard&) = delete;

    bool isUsable() const { return m_keyboard && !m_connection.isLost(); }
    const WaylandKeymap& keymap() const { return m_keymap; }
    WaylandConnection& connection() { return m_connection; }

    /// Sees to it that these characters beyond the US layout have keys. Yields false when that failed.
    bool prepare(const std::u32string& extra);
    void key(std::uint32_t inputEventCode, bool isDown);
    /// Holds exactly these modifiers (the bits of the real modifiers in XKB).
    void hold(std::uint32_t modifiers);
    void type(char32_t character);

private:
    WaylandConnection& m_connection;
    WaylandKeymap m_keymap;
    zwp_virtual_keyboard_manager_v1* m_manager;
    zwp_virtual_keyboard_v1* m_keyboard = nullptr;
    std::u32string m_extra; ///< as the compositor has them
    bool m_hasKeymap = false;
    std::uint32_t m_held = 0;
};

} // namespace vocalith
