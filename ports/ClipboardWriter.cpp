#include "ports/ClipboardWriter.h"

namespace vocalith {

std::string userMessage(const ClipboardError& error)
{
    using Kind = ClipboardError::Kind;
    switch (error.kind) {
    case Kind::noDesktop: return "There is no clipboard outside of a desktop session.";
    case Kind::noProgram:
        return "Nothing is installed that can copy to the clipboard. Install the package " + error.detail + ".";
    case Kind::failed: return "The text could not be copied to the clipboard: " + error.detail;
    case Kind::cancelled: return "Cancelled";
    }
    return {};
}

} // namespace vocalith
