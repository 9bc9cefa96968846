#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "ports/KeyEvents.h"

#include <memory>

namespace vocalith {

class X11Connection;

/// Synthetic keys through the XTest extension. The connection is its own alone. Main thread.
///
/// Text is typed with the keys of the active layout, and where that lacks a character with spare keys that are lent to
/// it for as long as the typing lasts. Each stretch of text is posted while the X server is held, so that its keys mean
/// what they did when they were looked up, and the next one follows when the application has answered a ping behind it.
class X11KeyEvents final : public KeyEvents {
public:
    X11KeyEvents(X11Connection& connection, Clock& clock, Logger logger);
    ~X11KeyEvents() override;

    std::unique_ptr<KeyEventSource> createSource(SourceState state) override;
    bool hasOwnUSLayout() const override { return false; }
    Task<bool> modifiersReleased(double seconds) override;

private:
    struct State;
    class Source;
    std::unique_ptr<State> m_state;
};

} // namespace vocalith
