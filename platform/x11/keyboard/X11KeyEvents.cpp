#include "platform/x11/keyboard/X11KeyEvents.h"

#include "base/OneShot.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/keyboard/X11HeldModifiers_p.h"
#include "platform/x11/keyboard/X11Typist_p.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <array>
#include <utility>

namespace vocalith {
namespace {

using KeyCode = X11Keyboard::KeyCode;

/// The modifiers of this desktop that flags stand for, as a mask.
unsigned maskOf(std::uint64_t flags)
{
    struct Meaning {
        std::uint64_t flag;
        unsigned mask;
    };
    constexpr std::array kMeanings{
        Meaning{modifier_flags::shift, ShiftMask}, Meaning{modifier_flags::control, ControlMask},
        Meaning{modifier_flags::command, ControlMask}, Meaning{modifier_flags::option, Mod1Mask}};
    unsigned mask = 0;
    for (const auto& meaning : kMeanings)
        mask |= (flags & meaning.flag) != 0 ? meaning.mask : 0U;
    return mask;
}

constexpr std::array<unsigned, 3> kModifiers{ControlMask, ShiftMask, Mod1Mask};

/// The chord with which terminals paste.
bool isTerminalPaste(const KeyEvent& event)
{
    constexpr auto kFlags = modifier_flags::command | modifier_flags::shift;
    return event.isDown && modifierFlag(event.virtualKeyCode) == 0 &&
           (event.flags & modifier_flags::ofShortcuts) == kFlags;
}

std::vector<KeyEvent> shiftInsert()
{
    constexpr int kInsert = 114;
    return {{kInsert, true, modifier_flags::shift}, {kInsert, false, modifier_flags::shift}};
}

} // namespace

struct X11KeyEvents::State {
    State(X11Connection& connection, Clock& used, const Logger& logger)
        : keyboard(connection), windows(connection), clock(used), typist(keyboard, used, logger)
    {}

    X11Keyboard keyboard;
    X11Windows windows;
    Clock& clock;
    X11Typist typist;
};

class X11KeyEvents::Source final : public KeyEventSource {
public:
    Source(State& state, SourceState kind) : m_state(state), m_keyboard(state.keyboard), m_kind(kind) {}

    std::optional<KeyEvent> createKeyEvent(int virtualKeyCode, bool isDown) override;
    Result<void, KeyEventsError> post(const std::vector<KeyEvent>& events) override;
    Task<Result<void, KeyEventsError>> type(std::string text) override { return m_state.typist.type(std::move(text)); }

private:
    KeyCode keyOf(int virtualKeyCode) const;
    void postAll(const std::vector<KeyEvent>& events);
    void postOne(const KeyEvent& event);

    State& m_state;
    X11Keyboard& m_keyboard;
    const SourceState m_kind;
    unsigned m_down = 0; ///< modifiers that this source has pressed, as a mask
};

std::optional<KeyEvent> X11KeyEvents::Source::createKeyEvent(int virtualKeyCode, bool isDown)
{
    if (!m_keyboard.connection().keyCode(virtualKeyCode))
        return std::nullopt;
    return KeyEvent{virtualKeyCode, isDown};
}

KeyCode X11KeyEvents::Source::keyOf(int virtualKeyCode) const
{
    if (const auto mask = maskOf(modifierFlag(virtualKeyCode)); mask != 0) {
        if (const auto key = m_keyboard.modifierKey(mask); key != 0)
            return key;
    }
    // Where no US layout could be selected, the key that pastes is the one with the letter.
    if (m_kind == SourceState::privateState && virtualKeyCode == virtual_key_code::ansiV) {
        if (const auto key = m_keyboard.key(U'v'))
            return *key;
    }
    return m_keyboard.connection().keyCode(virtualKeyCode).value_or(0);
}

void X11KeyEvents::Source::postOne(const KeyEvent& event)
{
    const auto own = maskOf(modifierFlag(event.virtualKeyCode));
    auto held = m_down;
    if (m_kind == SourceState::hidSystem)
        held |= m_keyboard.heldModifiers();
    const auto missing = maskOf(event.flags) & ~held & ~own;
    for (const auto modifier : kModifiers) {
        if ((missing & modifier) != 0)
            m_keyboard.post(m_keyboard.modifierKey(modifier), true);
    }
    m_keyboard.post(keyOf(event.virtualKeyCode), event.isDown);
    for (const auto modifier : kModifiers) {
        if ((missing & modifier) != 0)
            m_keyboard.post(m_keyboard.modifierKey(modifier), false);
    }
    m_down = event.isDown ? m_down | own : m_down & ~own;
}

void X11KeyEvents::Source::postAll(const std::vector<KeyEvent>& events)
{
    for (const auto& event : events)
        postOne(event);
}

Result<void, KeyEventsError> X11KeyEvents::Source::post(const std::vector<KeyEvent>& events)
{
    auto& connection = m_keyboard.connection();
    m_keyboard.refresh();
    // Never what somebody else has selected there.
    const bool isForPrimary = std::ranges::any_of(events, isTerminalPaste) &&
                              pastesFromPrimary(m_state.windows.focusedClass()) &&
                              m_state.windows.isOwnSelection(XA_PRIMARY);
    const auto posted = isForPrimary ? shiftInsert() : events;
    if (m_kind == SourceState::privateState) {
        const X11HeldModifiers lifted(m_keyboard);
        postAll(posted);
    } else {
        postAll(posted);
    }
    XSync(connection.display(), False);
    if (connection.isLost())
        return failure(KeyEventsError{KeyEventsError::Kind::unavailable,
                                      "The connection to the X server is lost. Start Vocalith again."});
    return {};
}

X11KeyEvents::X11KeyEvents(X11Connection& connection, Clock& clock, Logger logger)
    : m_state(std::make_unique<State>(connection, clock, logger))
{}

X11KeyEvents::~X11KeyEvents() = default;

std::unique_ptr<KeyEventSource> X11KeyEvents::createSource(SourceState state)
{
    if (!m_state->keyboard.canPost() || m_state->keyboard.connection().isLost())
        return nullptr;
    return std::make_unique<Source>(*m_state, state);
}

Task<bool> X11KeyEvents::modifiersReleased(double seconds)
{
    auto& keyboard = m_state->keyboard;
    keyboard.refresh();
    if (!keyboard.isModifierHeld())
        co_return true;
    OneShot<bool> released;
    const auto change = keyboard.modifiersChanged.subscribe([&keyboard, resolve = released.resolver()] {
        if (!keyboard.isModifierHeld())
            resolve(true);
    });
    const auto limit = std::chrono::duration_cast<Duration>(std::chrono::duration<double>(seconds));
    const auto patience = m_state->clock.after(limit, [resolve = released.resolver()] { resolve(false); });
    const auto result = co_await released;
    co_return result.value_or(false);
}

} // namespace vocalith
