#pragma once

#include "ports/KeyEvents.h"

#include <memory>

namespace vocalith {

class PortalRemoteDesktop;

/// Keys through a session of the RemoteDesktop portal; there are none until it has started. From a private source a key
/// is named by what it does on a US keyboard, and the desktop finds it in whatever layout is active; from the system's
/// source it is the key at its place. Keys are sent one after the other, each when the one before has been taken.
class PortalKeyEvents final : public KeyEvents {
public:
    explicit PortalKeyEvents(PortalRemoteDesktop& desktop);
    ~PortalKeyEvents() override;

    std::unique_ptr<KeyEventSource> createSource(SourceState state) override;
    bool hasOwnUSLayout() const override { return false; }
    Task<bool> modifiersReleased(double seconds) override;

private:
    class Queue;
    class Source;
    PortalRemoteDesktop& m_desktop;
    std::shared_ptr<Queue> m_queue;
};

} // namespace vocalith
