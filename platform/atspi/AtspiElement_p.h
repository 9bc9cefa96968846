#pragma once

#include "platform/atspi/AtspiBus_p.h"
#include "platform/atspi/FocusSearch_p.h"
#include "ports/Accessibility.h"

#include <chrono>
#include <memory>

namespace vocalith {

/// What is known of an object when it is found.
struct AtspiTraits {
    bool isSecure = false;
    bool hasText = false;
    bool isEditable = false;
    bool countsUtf16 = false; ///< the toolkit wants lengths in UTF-16 units, not in bytes
    int processId = 0;
};

/// An object with the keyboard focus. It keeps the connection alive.
class AtspiElement final : public FocusedElement {
public:
    static constexpr std::chrono::milliseconds kTimeLimit{200};

    AtspiElement(std::shared_ptr<AtspiBus> bus, FocusedNode node, AtspiTraits traits);

    bool isSecure() const override { return m_traits.isSecure; }
    bool isEditable() const override { return m_traits.isEditable; }
    int processId() const override { return m_traits.processId; }

    Task<int> setSelectedText(std::string text) override;
    Task<std::optional<FocusedText>> text(int limit) override;
    Task<std::string> visibleText(int limit) override;

private:
    struct Position;
    Task<std::optional<Position>> position(Instant deadline);
    Instant deadline() const { return m_bus->clock().instant() + kTimeLimit; }
    AtspiCall textCall(const char* method, QVariantList arguments) const;
    AtspiCall editCall(const char* method, QVariantList arguments) const;

    const std::shared_ptr<AtspiBus> m_bus;
    const FocusedNode m_node;
    const AtspiTraits m_traits;
};

} // namespace vocalith
