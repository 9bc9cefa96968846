#pragma once

#include "base/Result.h"
#include "base/Task.h"

#include <string>

namespace vocalith {

struct ClipboardError {
    enum class Kind {
        noDesktop, ///< the program runs in no desktop session, so there is no clipboard
        noProgram, ///< what it takes is not installed; `detail` is the package that is missing
        failed,    ///< `detail` says why, for people
        cancelled
    };
    Kind kind = Kind::failed;
    std::string detail{};
    bool operator==(const ClipboardError&) const = default;
};

/// The sentence that is shown to the user: what is wrong and what to do about it.
std::string userMessage(const ClipboardError& error);

/// Puts text on the desktop's clipboard, where it stays after this program has ended. Main thread; it outlives its
/// tasks.
class ClipboardWriter {
public:
    virtual ~ClipboardWriter() = default;

    /// When this succeeds the text was taken; others find it on the clipboard a moment later.
    virtual Task<Result<void, ClipboardError>> write(std::string text) = 0;
};

} // namespace vocalith
