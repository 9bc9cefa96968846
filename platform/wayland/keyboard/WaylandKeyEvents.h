#pragma once

#include "base/Clock.h"
#include "ports/KeyEvents.h"

#include <memory>

namespace vocalith {

class WaylandConnection;
class WaylandVirtualKeyboard;

/// Keys through virtual-keyboard-unstable-v1: a keyboard of our own beside the user's. What the user holds and which
/// layout is active does not matter to it; its keys are those of the US layout whatever the source's state.
class WaylandKeyEvents final : public KeyEvents {
public:
    WaylandKeyEvents(WaylandConnection& connection, Clock& clock);
    ~WaylandKeyEvents() override;

    static bool isOffered(const WaylandConnection& connection);

    std::unique_ptr<KeyEventSource> createSource(SourceState state) override;
    bool hasOwnUSLayout() const override { return true; }
    Task<bool> modifiersReleased(double seconds) override;

private:
    Clock& m_clock;
    std::unique_ptr<WaylandVirtualKeyboard> m_keyboard;
};

} // namespace vocalith
