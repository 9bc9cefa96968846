#include "core/output/typing/TextTypingError.h"

namespace vocalith {

std::string userMessage(const TextTypingError& error)
{
    using Kind = TextTypingError::Kind;
    switch (error.kind) {
    case Kind::couldNotCreateEventSource: return "Vocalith cannot press keys on this desktop.";
    case Kind::keysNotPosted:
    case Kind::clipboardNotWritten: return error.detail;
    case Kind::notFetched: return "The application did not take the text.";
    case Kind::clipboardTaken: return "Another program changed the clipboard before the text was inserted.";
    case Kind::noFocusedElement: return "No text field has the keyboard focus.";
    case Kind::elementRefused: return "The text field did not take the text (error " + error.detail + ").";
    case Kind::cancelled: return "Cancelled";
    }
    return {};
}

} // namespace vocalith
