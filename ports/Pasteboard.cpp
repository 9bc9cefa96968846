#include "ports/Pasteboard.h"

namespace vocalith {

std::string userMessage(const PasteboardError& error)
{
    using Kind = PasteboardError::Kind;
    switch (error.kind) {
    case Kind::unavailable: return "Vocalith cannot reach the clipboard of this desktop. " + error.detail;
    case Kind::failed: return "The clipboard could not be used: " + error.detail;
    case Kind::cancelled: return "Cancelled";
    }
    return {};
}

} // namespace vocalith
