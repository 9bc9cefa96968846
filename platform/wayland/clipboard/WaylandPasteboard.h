#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "ports/Pasteboard.h"

#include <memory>

namespace vocalith {

class WaylandConnection;

/// The clipboard through wlr-data-control-unstable-v1, which needs neither a window nor the focus. The compositor tells
/// that a text was read, but not by whom.
class WaylandPasteboard final : public Pasteboard {
public:
    WaylandPasteboard(WaylandConnection& connection, Clock& clock, Logger logger = {});
    ~WaylandPasteboard() override;

    static bool isOffered(const WaylandConnection& connection);

    Task<Result<PasteboardSnapshot, PasteboardError>> snapshot() override;
    Task<Result<void, PasteboardError>> writeText(std::string text, bool isTransient) override;
    Task<Result<void, PasteboardError>> restore(PasteboardSnapshot snapshot) override;
    std::int64_t changeCount() const override;

private:
    struct Device;
    std::unique_ptr<Device> m_device;
};

} // namespace vocalith
