#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "ports/Pasteboard.h"

#include <memory>

namespace vocalith {

class PortalRemoteDesktop;

/// The clipboard through the Clipboard portal, in a session of the RemoteDesktop portal that has started. The desktop
/// tells that a text was read, but not by whom.
class PortalPasteboard final : public Pasteboard {
public:
    PortalPasteboard(PortalRemoteDesktop& desktop, Clock& clock, Logger logger = {});
    ~PortalPasteboard() override;

    /// Types are read one after the other, since some desktops refuse two reads at a time.
    Task<Result<PasteboardSnapshot, PasteboardError>> snapshot() override;
    Task<Result<void, PasteboardError>> writeText(std::string text, bool isTransient) override;
    Task<Result<void, PasteboardError>> restore(PasteboardSnapshot snapshot) override;
    std::int64_t changeCount() const override;

private:
    class Selection;
    Task<Result<void, PasteboardError>> offer(std::vector<PasteboardSnapshot::Representation> representations,
                                              bool isText);

    std::unique_ptr<Selection> m_selection;
};

} // namespace vocalith
