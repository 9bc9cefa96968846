#include "platform/portal/remote/PortalKeyEvents.h"

#include "base/OneShot.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"
#include "platform/portal/remote/PortalKeySymbols_p.h"
#include "platform/portal/remote/PortalRemoteSession_p.h"

#include <algorithm>
#include <array>
#include <deque>
#include <linux/input-event-codes.h>

namespace vocalith {
namespace {

using Kind = KeyEventsError::Kind;

constexpr std::size_t kBatch = 8; // characters between two looks at the stop token

struct HeldKey {
    std::uint64_t flags;
    int inputEventCode;
};

constexpr std::array kHeldKeys{
    HeldKey{modifier_flags::shift, KEY_LEFTSHIFT},
    HeldKey{modifier_flags::control | modifier_flags::command, KEY_LEFTCTRL}, // the key for editing commands
    HeldKey{modifier_flags::option, KEY_LEFTALT},
};

/// One press or release, as the portal takes it.
struct Stroke {
    bool isSymbol;
    int code;
    bool isDown;
};

std::optional<int> codeOf(int virtualKeyCode)
{
    if (virtualKeyCode == virtual_key_code::command)
        return KEY_LEFTCTRL;
    if (virtualKeyCode == virtual_key_code::rightCommand)
        return KEY_RIGHTCTRL;
    return inputEventCode(virtualKeyCode);
}

} // namespace

/// The portal may handle calls in any order, so that each waits for the answer to the one before.
class PortalKeyEvents::Queue : public std::enable_shared_from_this<Queue> {
public:
    using Drained = Result<void, KeyEventsError>;

    explicit Queue(PortalRemoteDesktop& desktop) : m_desktop(desktop) {}

    bool isUsable() const { return m_desktop.hasKeyboard(); }
    void add(Stroke stroke)
    {
        m_strokes.push_back(stroke);
        if (!m_isSending)
            sendNext();
    }
    /// Waits until everything has been taken, or something has not.
    Task<Drained> drained()
    {
        if (!m_isSending)
            co_return Drained();
        OneShot<Drained> done;
        m_waiting.push_back(done.resolver());
        auto outcome = co_await done;
        if (!outcome)
            co_return failure(KeyEventsError{Kind::cancelled});
        co_return std::move(*outcome);
    }

private:
    void sendNext()
    {
        m_isSending = !m_strokes.empty();
        if (!m_isSending)
            return finish();
        const auto stroke = m_strokes.front();
        m_strokes.pop_front();
        auto& state = m_desktop.state();
        const auto method =
            stroke.isSymbol ? QStringLiteral("NotifyKeyboardKeysym") : QStringLiteral("NotifyKeyboardKeycode");
        const QVariantList arguments{state.session(), QVariantMap(), stroke.code, stroke.isDown ? 1U : 0U};
        state.bus.call(QLatin1String(portal::remoteDesktop), method, arguments,
                       [weak = weak_from_this()](const auto& answer) {
                           const auto self = weak.lock();
                           if (!self)
                               return;
                           if (!answer)
                               self->fail(answer.error());
                           self->sendNext();
                       });
    }

    void fail(const PortalError& error)
    {
        if (m_waiting.empty()) // nobody is told, and certainly not who types next
            m_desktop.state().logger.warning("The desktop did not take a key: " + error.detail);
        else
            m_result = failure(KeyEventsError{Kind::failed, error.detail});
        // What goes down comes up again all the same.
        std::erase_if(m_strokes, [](const auto& stroke) { return stroke.isDown; });
    }

    void finish()
    {
        if (m_waiting.empty())
            return;
        const auto result = std::exchange(m_result, {});
        for (const auto& resolve : std::exchange(m_waiting, {}))
            resolve(result);
    }

    PortalRemoteDesktop& m_desktop;
    std::deque<Stroke> m_strokes;
    bool m_isSending = false;
    Drained m_result;
    std::vector<OneShot<Drained>::Resolver> m_waiting;
};

class PortalKeyEvents::Source final : public KeyEventSource {
public:
    Source(std::shared_ptr<Queue> queue, SourceState state) : m_queue(std::move(queue)), m_state(state) {}

    std::optional<KeyEvent> createKeyEvent(int virtualKeyCode, bool isDown) override
    {
        if (!codeOf(virtualKeyCode))
            return std::nullopt;
        return KeyEvent{virtualKeyCode, isDown, 0};
    }

    Result<void, KeyEventsError> post(const std::vector<KeyEvent>& events) override
    {
        if (!m_queue->isUsable())
            return failure(KeyEventsError{Kind::failed, "The desktop has ended the session."});
        for (const auto& event : events)
            postOne(event);
        return {};
    }

    Task<Result<void, KeyEventsError>> type(std::string text) override
    {
        const auto characters = QString::fromStdString(text).toStdU32String();
        std::u32string_view rest = characters;
        while (!rest.empty()) {
            if (!m_queue->isUsable())
                co_return failure(KeyEventsError{Kind::failed, "The desktop has ended the session."});
            for (const char32_t character : rest.substr(0, kBatch))
                typeOne(character);
            rest.remove_prefix(std::min(kBatch, rest.size()));
            const auto drained = co_await m_queue->drained();
            if (!drained)
                co_return failure(drained.error());
        }
        co_return Result<void, KeyEventsError>();
    }

private:
    void typeOne(char32_t character)
    {
        const auto symbol = static_cast<int>(keysymOf(character));
        if (symbol == 0)
            return;
        m_queue->add({true, symbol, true});
        m_queue->add({true, symbol, false});
    }

    void postOne(const KeyEvent& event)
    {
        const auto code = codeOf(event.virtualKeyCode);
        if (!code)
            return;
        if (const auto own = modifierFlag(event.virtualKeyCode)) {
            m_held = event.isDown ? m_held | own : m_held & ~own;
            return m_queue->add({false, *code, event.isDown});
        }
        const auto isMissing = [&](const HeldKey& key) { return (event.flags & key.flags) && !(m_held & key.flags); };
        const auto symbol = m_state == SourceState::privateState ? keysym(event.virtualKeyCode) : 0;
        for (const auto& key : kHeldKeys) {
            if (isMissing(key))
                m_queue->add({false, key.inputEventCode, true});
        }
        m_queue->add({symbol != 0, symbol != 0 ? static_cast<int>(symbol) : *code, event.isDown});
        for (const auto& key : kHeldKeys) {
            if (isMissing(key))
                m_queue->add({false, key.inputEventCode, false});
        }
    }

    const std::shared_ptr<Queue> m_queue;
    const SourceState m_state;
    std::uint64_t m_held = 0;
};

PortalKeyEvents::PortalKeyEvents(PortalRemoteDesktop& desktop)
    : m_desktop(desktop), m_queue(std::make_shared<Queue>(desktop))
{}

PortalKeyEvents::~PortalKeyEvents() = default;

std::unique_ptr<KeyEventSource> PortalKeyEvents::createSource(SourceState state)
{
    if (!m_desktop.hasKeyboard())
        return nullptr;
    return std::make_unique<Source>(m_queue, state);
}

Task<bool> PortalKeyEvents::modifiersReleased(double)
{
    co_return true; // the portal does not say what the user holds
}

} // namespace vocalith
