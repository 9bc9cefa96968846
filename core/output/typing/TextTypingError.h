#pragma once

#include <string>

namespace vocalith {

enum class TextTypingResult {
    success,
    permissionNeeded ///< the mode needs the accessibility permission, which the process does not have
};

struct TextTypingError {
    enum class Kind {
        couldNotCreateEventSource, ///< nobody can press keys here
        keysNotPosted,             ///< `detail` says why
        clipboardNotWritten,       ///< `detail` says why
        notFetched,                ///< the application did not read the text; it is on the clipboard
        clipboardTaken,            ///< another program replaced the text on the clipboard before it was read
        noFocusedElement,
        elementRefused, ///< `detail` is the number of the error
        cancelled
    };
    Kind kind = Kind::cancelled;
    std::string detail{};
    bool operator==(const TextTypingError&) const = default;
};

/// The sentence that is shown to the user: what is wrong.
std::string userMessage(const TextTypingError& error);

} // namespace vocalith
