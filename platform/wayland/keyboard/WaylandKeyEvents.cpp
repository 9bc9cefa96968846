#include "platform/wayland/keyboard/WaylandKeyEvents.h"

#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"
#include "platform/wayland/keyboard/WaylandVirtualKeyboard_p.h"

#include <QString>

#include <array>
#include <linux/input-event-codes.h>
#include <span>

namespace vocalith {
namespace {

using Kind = KeyEventsError::Kind;

// An application that hangs does not empty its socket, and the compositor throws out one whose socket is full, after
// some 4,000 characters: it has three seconds to come back.
constexpr std::size_t kBatch = 16;
constexpr Duration kPause = std::chrono::milliseconds(12);

struct RealModifier {
    std::uint64_t flag;
    std::uint32_t bit; ///< in XKB
    int inputEventCode;
};

constexpr std::array kModifiers{
    RealModifier{modifier_flags::shift, 1U << 0, KEY_LEFTSHIFT},
    RealModifier{modifier_flags::control, 1U << 2, KEY_LEFTCTRL},
    RealModifier{modifier_flags::command, 1U << 2, KEY_LEFTCTRL}, // the key for editing commands
    RealModifier{modifier_flags::option, 1U << 3, KEY_LEFTALT},
};

std::uint32_t bitsOf(std::uint64_t flags)
{
    std::uint32_t bits = 0;
    for (const auto& modifier : kModifiers)
        bits |= flags & modifier.flag ? modifier.bit : 0;
    return bits;
}

std::optional<std::uint32_t> keyFor(int virtualKeyCode)
{
    if (virtualKeyCode == virtual_key_code::command)
        return KEY_LEFTCTRL;
    if (virtualKeyCode == virtual_key_code::rightCommand)
        return KEY_RIGHTCTRL;
    const auto code = inputEventCode(virtualKeyCode);
    return code ? std::optional(static_cast<std::uint32_t>(*code)) : std::nullopt;
}

/// Without what no key types; a line end of two characters is one.
std::u32string typable(const std::string& text)
{
    std::u32string characters;
    for (const char32_t character : QString::fromStdString(text).toStdU32String()) {
        if (WaylandKeymap::isTypable(character))
            characters += character;
    }
    return characters;
}

/// The longest beginning that one keymap can type, and what it needs beyond the US layout.
struct Stretch {
    std::size_t length = 0;
    std::u32string extra;
};

Stretch stretchOf(const WaylandKeymap& keymap, std::u32string_view text)
{
    Stretch stretch;
    for (const char32_t character : text) {
        if (!keymap.hasCharacter(character) && stretch.extra.find(character) == std::u32string::npos) {
            if (stretch.extra.size() == WaylandKeymap::mostExtraCharacters)
                break;
            stretch.extra += character;
        }
        ++stretch.length;
    }
    return stretch;
}

KeyEventsError lostConnection()
{
    return {Kind::failed, "The connection to the compositor was lost."};
}

class Source final : public KeyEventSource {
public:
    Source(WaylandVirtualKeyboard& keyboard, Clock& clock) : m_keyboard(keyboard), m_clock(clock) {}
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    ~Source() override
    {
        if (m_down == 0 || !m_keyboard.isUsable())
            return;
        m_keyboard.hold(0); // whoever forgot it, nobody wants to type with Control held for ever
        m_keyboard.connection().flush();
    }

    std::optional<KeyEvent> createKeyEvent(int virtualKeyCode, bool isDown) override
    {
        const auto key = keyFor(virtualKeyCode);
        if (!key || !m_keyboard.keymap().hasKey(*key))
            return std::nullopt;
        return KeyEvent{virtualKeyCode, isDown, 0};
    }

    Result<void, KeyEventsError> post(const std::vector<KeyEvent>& events) override
    {
        if (!m_keyboard.isUsable())
            return failure(lostConnection());
        for (const auto& event : events)
            postOne(event);
        m_keyboard.connection().flush();
        return {};
    }

    Task<Result<void, KeyEventsError>> type(std::string text) override
    {
        const auto stop = co_await currentStopToken();
        const auto characters = typable(text);
        std::u32string_view rest = characters;
        while (!rest.empty()) {
            if (!m_keyboard.isUsable())
                co_return failure(lostConnection());
            const auto stretch = stretchOf(m_keyboard.keymap(), rest);
            if (!m_keyboard.prepare(stretch.extra))
                co_return failure(KeyEventsError{Kind::failed, "No memory for a keymap."});
            const auto typed = co_await typeStretch(rest.substr(0, stretch.length), stop);
            if (!typed)
                co_return failure(typed.error());
            rest.remove_prefix(stretch.length);
        }
        co_return Result<void, KeyEventsError>();
    }

private:
    Task<Result<void, KeyEventsError>> typeStretch(std::u32string_view text, StopToken stop)
    {
        while (!text.empty()) {
            const auto batch = text.substr(0, kBatch);
            for (const char32_t character : batch)
                m_keyboard.type(character);
            m_keyboard.hold(0);
            text.remove_prefix(batch.size());
            const bool hasArrived = co_await m_keyboard.connection().synchronized();
            if (stop.stop_requested())
                co_return failure(KeyEventsError{Kind::cancelled});
            if (!hasArrived)
                co_return failure(lostConnection());
            if (text.empty())
                break;
            const auto rested = co_await sleepFor(m_clock, kPause);
            if (!rested)
                co_return failure(KeyEventsError{Kind::cancelled});
        }
        co_return Result<void, KeyEventsError>();
    }

    void postOne(const KeyEvent& event)
    {
        const auto key = keyFor(event.virtualKeyCode);
        if (!key)
            return;
        if (const auto own = modifierFlag(event.virtualKeyCode); bitsOf(own) != 0) {
            m_keyboard.key(*key, event.isDown);
            m_down = event.isDown ? m_down | own : m_down & ~own;
            m_keyboard.hold(bitsOf(m_down));
            return;
        }
        m_keyboard.hold(bitsOf(m_down | event.flags));
        m_keyboard.key(*key, event.isDown);
        m_keyboard.hold(bitsOf(m_down));
    }

    WaylandVirtualKeyboard& m_keyboard;
    Clock& m_clock;
    std::uint64_t m_down = 0; ///< the modifiers whose keys are down
};

} // namespace

WaylandKeyEvents::WaylandKeyEvents(WaylandConnection& connection, Clock& clock)
    : m_clock(clock), m_keyboard(std::make_unique<WaylandVirtualKeyboard>(connection))
{}

WaylandKeyEvents::~WaylandKeyEvents() = default;

bool WaylandKeyEvents::isOffered(const WaylandConnection& connection)
{
    return connection.seat() && connection.offers("zwp_virtual_keyboard_manager_v1");
}

std::unique_ptr<KeyEventSource> WaylandKeyEvents::createSource(SourceState)
{
    if (!m_keyboard->isUsable())
        return nullptr;
    return std::make_unique<Source>(*m_keyboard, m_clock);
}

Task<bool> WaylandKeyEvents::modifiersReleased(double)
{
    co_return true; // the keyboard is our own
}

} // namespace vocalith
