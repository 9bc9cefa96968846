#include "ports/Automations.h"

namespace vocalith {

std::string userMessage(const AutomationError& error)
{
    switch (error.kind) {
    case AutomationError::Kind::notFound:
    case AutomationError::Kind::failed: return error.detail;
    case AutomationError::Kind::cancelled: return "Cancelled";
    }
    return {};
}

} // namespace vocalith
