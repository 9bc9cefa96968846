#pragma once

#include "base/Observable.h"
#include "base/Uuid.h"

#include <variant>

namespace vocalith {

/// What the user's shortcuts ask for.
namespace keyboard_activation {
struct Idle {
    bool operator==(const Idle&) const = default;
};
/// The shortcut asks for a dictation to start.
struct Activated {
    Uuid shortcutID;
    bool operator==(const Activated&) const = default;
};
/// The shortcut asks for the running dictation to finish.
struct Completed {
    Uuid shortcutID;
    bool operator==(const Completed&) const = default;
};
} // namespace keyboard_activation

using KeyboardActivationState =
    std::variant<keyboard_activation::Idle, keyboard_activation::Activated, keyboard_activation::Completed>;

/// Where start and stop signals come from: the global shortcuts, or the command line. Whoever publishes here drives the
/// dictation; the overlay's coordinator observes. Main thread.
struct ShortcutNotifier {
    Observable<KeyboardActivationState> state;
    Signal<> escapeTriggered;
    Signal<> returnTriggered;
};

} // namespace vocalith
