#pragma once

#include "base/Result.h"
#include "base/Task.h"

#include <string>
#include <vector>

namespace vocalith {

struct AutomationError {
    enum class Kind {
        notFound, ///< the user has no automation of that name
        failed,   ///< `detail` says why, for people
        cancelled
    };
    Kind kind = Kind::failed;
    std::string detail{};
    bool operator==(const AutomationError&) const = default;
};

/// The sentence that is shown to the user: what is wrong and what to do about it.
std::string userMessage(const AutomationError& error);

/// The user's named automations. Main thread; it outlives its tasks. A stop ends the wait, not what was started.
class Automations {
public:
    virtual ~Automations() = default;

    /// Their names, sorted.
    virtual std::vector<std::string> names() const = 0;
    /// Starts the automation of that name, and waits for a moment whether it fails at once; one that takes longer runs
    /// on by itself.
    virtual Task<Result<void, AutomationError>> run(std::string name) = 0;
};

} // namespace vocalith
