#pragma once

#include "base/Result.h"
#include "base/Task.h"

#include <string>

namespace vocalith {

struct TextOutputError {
    std::string reason; ///< what went wrong, for people
    std::string rescue; ///< where the text is now instead, as a sentence; empty when it is nowhere
    bool operator==(const TextOutputError&) const = default;
};

/// Where the finished text of a dictation goes: the focused application, or standard output. An implementation that
/// fails puts the text somewhere else before it says so: words that were spoken are not lost. Main thread.
class TextOutput {
public:
    virtual ~TextOutput() = default;

    virtual Task<Result<void, TextOutputError>> deliver(std::string text) = 0;
};

} // namespace vocalith
