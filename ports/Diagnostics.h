#pragma once

#include "base/Task.h"

#include <string>
#include <vector>

namespace vocalith {

/// One line of the program's report about the machine.
struct Finding {
    enum class State { good, limited, missing };
    std::string subject; ///< e.g. "Audio server"
    State state = State::good;
    std::string detail; ///< what was found
    std::string remedy; ///< the command or action that mends it; empty when nothing needs mending
    bool operator==(const Finding&) const = default;
};

/// A part of the program that can say whether it will work on this machine. Main thread; an examination takes at most a
/// few seconds and changes nothing.
class Diagnostics {
public:
    virtual ~Diagnostics() = default;

    virtual Task<std::vector<Finding>> examine() = 0;
};

} // namespace vocalith
