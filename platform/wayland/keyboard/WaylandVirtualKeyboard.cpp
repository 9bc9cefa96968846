#include "platform/wayland/keyboard/WaylandVirtualKeyboard_p.h"

#include "base/FileDescriptor.h"

#include <algorithm>
#include <chrono>
#include <sys/mman.h>
#include <virtual-keyboard-unstable-v1.h>
#include <wayland-client.h>

namespace vocalith {
namespace {

constexpr std::uint32_t kShift = 1;

std::uint32_t milliseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

/// A file in memory with the text and its final zero.
FileDescriptor inMemory(const std::string& text)
{
    FileDescriptor file(memfd_create("vocalith-keymap", MFD_CLOEXEC));
    const auto size = static_cast<ssize_t>(text.size() + 1);
    if (file.isOpen() && ::write(file.get(), text.c_str(), text.size() + 1) != size)
        file.close();
    return file;
}

} // namespace

WaylandVirtualKeyboard::WaylandVirtualKeyboard(WaylandConnection& connection)
    : m_connection(connection),
      m_manager(connection.bind<zwp_virtual_keyboard_manager_v1>(zwp_virtual_keyboard_manager_v1_interface, 1))
{
    if (!m_manager || !connection.seat())
        return;
    m_keyboard = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(m_manager, connection.seat());
    prepare({});
    connection.flush();
}

WaylandVirtualKeyboard::~WaylandVirtualKeyboard()
{
    if (m_keyboard)
        zwp_virtual_keyboard_v1_destroy(m_keyboard);
    if (m_manager)
        zwp_virtual_keyboard_manager_v1_destroy(m_manager);
    m_connection.flush();
}

bool WaylandVirtualKeyboard::prepare(const std::u32string& extra)
{
    const bool isThere =
        std::ranges::all_of(extra, [this](char32_t one) { return m_extra.find(one) != std::u32string::npos; });
    if (m_hasKeymap && isThere)
        return true;
    const auto text = m_keymap.text(extra);
    const auto file = inMemory(text);
    if (!file.isOpen())
        return false;
    zwp_virtual_keyboard_v1_keymap(m_keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file.get(),
                                   static_cast<std::uint32_t>(text.size() + 1));
    m_extra = extra;
    m_hasKeymap = true;
    zwp_virtual_keyboard_v1_modifiers(m_keyboard, m_held, 0, 0, 0);
    return true;
}

void WaylandVirtualKeyboard::key(std::uint32_t inputEventCode, bool isDown)
{
    zwp_virtual_keyboard_v1_key(m_keyboard, milliseconds(), inputEventCode,
                                isDown ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
}

void WaylandVirtualKeyboard::hold(std::uint32_t modifiers)
{
    if (std::exchange(m_held, modifiers) != modifiers)
        zwp_virtual_keyboard_v1_modifiers(m_keyboard, modifiers, 0, 0, 0);
}

void WaylandVirtualKeyboard::type(char32_t character)
{
    const auto stroke = m_keymap.stroke(character, m_extra);
    if (!stroke)
        return;
    hold(stroke->hasShift ? kShift : 0);
    key(stroke->inputEventCode, true);
    key(stroke->inputEventCode, false);
}

} // namespace vocalith
