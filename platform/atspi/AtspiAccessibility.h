#pragma once

#include "base/Clock.h"
#include "ports/Accessibility.h"

#include <memory>
#include <string>

namespace vocalith {

/// Accessibility over AT-SPI2. Applications are asked to be accessible for as long as this lives. The composition owns
/// it; main thread. It connects by itself, and again when the bus has been away.
class AtspiAccessibility final : public Accessibility {
public:
    /// `sessionBus` is the address of the session bus; empty for that of the environment.
    explicit AtspiAccessibility(Clock& clock, std::string sessionBus = {});
    AtspiAccessibility(const AtspiAccessibility&) = delete;
    AtspiAccessibility& operator=(const AtspiAccessibility&) = delete;
    ~AtspiAccessibility() override;

    bool isProcessTrusted() const override;
    Task<std::unique_ptr<FocusedElement>> focusedElement() override;

    /// Waits until it has connected, or there is nothing to connect to; yields whether it has.
    Task<bool> connected();
    /// To be awaited before this is destroyed. Unless a screen reader runs, applications need not be accessible any
    /// more if they were not before.
    Task<void> shutDown();

private:
    class Connection;
    const std::unique_ptr<Connection> m_connection;
    Clock& m_clock;
};

} // namespace vocalith
