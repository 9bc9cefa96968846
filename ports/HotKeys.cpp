#include "ports/HotKeys.h"

#include "models/KeyboardShortcutText.h"

namespace vocalith {

std::string userMessage(const HotKeyError& error, const KeyboardShortcut::Keys& keys)
{
    using Kind = HotKeyError::Kind;
    const std::string name = toString(keys);
    switch (error.kind) {
    case Kind::taken:
        return "Another program uses " + name + " already. Choose other keys for the dictation, or free them there.";
    case Kind::unknownKey: return "This keyboard has no key for " + name + ". Choose other keys for the dictation.";
    case Kind::unsupported: return name + " cannot be used everywhere on this desktop. " + error.detail;
    case Kind::failed: return "The shortcut " + name + " could not be set up: " + error.detail;
    }
    return {};
}

} // namespace vocalith
