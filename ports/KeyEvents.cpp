#include "ports/KeyEvents.h"

namespace vocalith {

std::string userMessage(const KeyEventsError& error)
{
    using Kind = KeyEventsError::Kind;
    switch (error.kind) {
    case Kind::unavailable: return "Vocalith cannot press keys on this desktop. " + error.detail;
    case Kind::refused: return "The desktop does not let Vocalith press keys. Allow remote control when it asks.";
    case Kind::failed: return "The keys could not be pressed: " + error.detail;
    case Kind::cancelled: return "Cancelled";
    }
    return {};
}

} // namespace vocalith
