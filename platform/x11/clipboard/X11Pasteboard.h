#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "ports/Pasteboard.h"

#include <memory>

namespace vocalith {

class X11Connection;

/// The X clipboard. It owns the selection itself, so it sees each read and whose it is. Terminals that paste from the
/// primary selection only find the text there too, from the write that follows a snapshot until the restore.
///
/// Main thread; large data goes in slices from the event loop, both ways. The connection is its own alone.
class X11Pasteboard final : public Pasteboard {
public:
    X11Pasteboard(X11Connection& connection, Clock& clock, Logger logger);
    ~X11Pasteboard() override;

    Task<Result<PasteboardSnapshot, PasteboardError>> snapshot() override;
    Task<Result<void, PasteboardError>> writeText(std::string text, bool isTransient) override;
    Task<Result<void, PasteboardError>> restore(PasteboardSnapshot snapshot) override;
    Task<void> handOver() override;
    std::int64_t changeCount() const override;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace vocalith
