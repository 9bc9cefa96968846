#include "tests/support/FakeKeyEvents.h"

namespace vocalith::test {

class FakeKeyEvents::Source final : public KeyEventSource {
public:
    Source(FakeKeyEvents& keys, SourceState state) : m_keys(keys), m_state(state) {}

    std::optional<KeyEvent> createKeyEvent(int virtualKeyCode, bool isDown) override
    {
        if (m_keys.missingKeys.contains(virtualKeyCode))
            return std::nullopt;
        return KeyEvent{virtualKeyCode, isDown, 0};
    }

    Result<void, KeyEventsError> post(const std::vector<KeyEvent>& events) override
    {
        if (m_keys.error)
            return failure(*m_keys.error);
        m_keys.posts.push_back({m_state, events});
        if (m_keys.whenPosted)
            m_keys.whenPosted(m_keys.posts.back());
        return {};
    }

    Task<Result<void, KeyEventsError>> type(std::string text) override
    {
        if (m_keys.error)
            co_return failure(*m_keys.error);
        m_keys.typed.push_back(std::move(text));
        co_return Result<void, KeyEventsError>();
    }

private:
    FakeKeyEvents& m_keys;
    const SourceState m_state;
};

std::unique_ptr<KeyEventSource> FakeKeyEvents::createSource(SourceState state)
{
    return hasNoSource ? nullptr : std::make_unique<Source>(*this, state);
}

Task<bool> FakeKeyEvents::modifiersReleased(double seconds)
{
    waits.push_back(seconds);
    if (!holdsModifiers)
        co_return true;
    OneShot<bool> ended;
    m_wait = ended.resolver();
    const auto areReleased = co_await ended;
    co_return areReleased.value_or(false);
}

void FakeKeyEvents::endWait(bool areReleased)
{
    holdsModifiers = false;
    if (m_wait)
        (*m_wait)(areReleased);
}

} // namespace vocalith::test
