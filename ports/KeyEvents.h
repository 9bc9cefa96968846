#pragma once

#include "base/Result.h"
#include "base/Task.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

struct KeyEventsError {
    enum class Kind {
        unavailable, ///< this desktop lets nobody type; `detail` says what to do
        refused,     ///< the user or the desktop said no
        failed,      ///< anything else; `detail` says what
        cancelled
    };
    Kind kind = Kind::failed;
    std::string detail{};
    bool operator==(const KeyEventsError&) const = default;
};

/// The sentence that is shown to the user: what is wrong and what to do about it.
std::string userMessage(const KeyEventsError& error);

/// One press or release of a key.
struct KeyEvent {
    int virtualKeyCode = 0;
    bool isDown = false;
    /// The modifiers that are held during the event (models/ModifierFlags.h). Here the command flag and the command key
    /// are the desktop's key for editing commands: Control. A modifier that is named but not down is pressed for the
    /// length of the event.
    std::uint64_t flags = 0;
    bool operator==(const KeyEvent&) const = default;
};

/// Where the events of one action come from.
class KeyEventSource {
public:
    virtual ~KeyEventSource() = default;

    /// Nothing for a key that this keyboard does not have.
    virtual std::optional<KeyEvent> createKeyEvent(int virtualKeyCode, bool isDown) = 0;
    /// Posts the events in their order with no pause between them. When this returns the desktop has them, or a
    /// connection is known to be gone.
    virtual Result<void, KeyEventsError> post(const std::vector<KeyEvent>& events) = 0;
    /// Types UTF-8 text of any script; a line feed is the Return key, a tabulator the Tab key. Done once the focused
    /// application has had every character, as far as the desktop lets one know. A stop ends it between two characters.
    virtual Task<Result<void, KeyEventsError>> type(std::string text) = 0;
};

/// Synthetic keyboard events for the focused application. Main thread; it outlives its sources and tasks.
class KeyEvents {
public:
    /// The state that a source starts from; the numbers are the platform's own.
    enum class SourceState : int {
        privateState = -1, ///< as if no modifier were held, whatever the user's fingers do
        hidSystem = 1      ///< with the keyboard as it is
    };

    virtual ~KeyEvents() = default;

    /// Null where no events can be made.
    virtual std::unique_ptr<KeyEventSource> createSource(SourceState state) = 0;
    /// Whether what is posted is read under a US layout of its own, whatever layout the user types with.
    virtual bool hasOwnUSLayout() const = 0;
    /// Waits until the user holds no modifier key, for at most `seconds`; yields whether that is so. Where others' keys
    /// cannot be seen, nor do they matter to what is posted, it is so at once.
    virtual Task<bool> modifiersReleased(double seconds) = 0;
};

} // namespace vocalith
