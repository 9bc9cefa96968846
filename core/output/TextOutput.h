#pragma once

#include "base/Result.h"
#include "base/Task.h"
#include "models/AIPrompt.h"

#include <string>

namespace vocalith {

struct TextOutputError {
    std::string reason; ///< what went wrong, for people
    std::string rescue; ///< where the text is now instead, as a sentence; empty when it is nowhere
    bool operator==(const TextOutputError&) const = default;
};

/// Where a text is once it has been delivered.
enum class TextDestination {
    application, ///< inserted, or printed
    clipboard,
    nowhere ///< the history alone is to have it
};

/// Where the finished text of a dictation goes: the focused application, or standard output. An implementation that
/// fails puts the text somewhere else before it says so: words that were spoken are not lost. Main thread.
class TextOutput {
public:
    virtual ~TextOutput() = default;

    /// `action` is what the user wants done with it; a reader of standard output gets every text. A stop while the text
    /// has not been handed over hands nothing over.
    virtual Task<Result<TextDestination, TextOutputError>> deliver(std::string text, ActionMode action) = 0;
};

} // namespace vocalith
