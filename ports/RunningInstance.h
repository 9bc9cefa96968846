#pragma once

#include "base/Result.h"
#include "base/Task.h"

#include <functional>
#include <string>

namespace vocalith {

/// What the one running program is asked to do, by a command, a link or the desktop.
struct InstanceRequest {
    enum class Action {
        start,  ///< a dictation; `argument` is the name of a prompt, or empty for the chosen one
        stop,   ///< end the recording and deliver its text
        toggle, ///< start, or stop what runs; `argument` as for start
        cancel,
        present, ///< come forward: it was started a second time
        open     ///< `argument` is a vocalith:// link
    };
    Action action = Action::present;
    std::string argument{};
    bool operator==(const InstanceRequest&) const = default;
};

struct InstanceError {
    enum class Kind {
        noBus,      ///< there is no session bus
        taken,      ///< another program of the user is the running instance already
        notRunning, ///< there is nobody to ask
        refused,    ///< the running instance says no; `detail` is its sentence for people
        noReply,    ///< the running instance does not answer
        failed,     ///< anything else; `detail` says what
        cancelled
    };
    Kind kind = Kind::failed;
    std::string detail{};
    bool operator==(const InstanceError&) const = default;
};

/// The sentence that is shown to the user: what is wrong and what to do about it.
std::string userMessage(const InstanceError& error);

/// The place where the running program of this user and desktop session can be found. Main thread; it outlives its
/// tasks.
class RunningInstance {
public:
    /// Carries a request out, or says in a sentence why not. Main thread.
    using Handler = std::function<Result<void, std::string>(const InstanceRequest&)>;

    virtual ~RunningInstance() = default;

    /// Becomes the running instance until this object is gone; from now on requests come to `handler`.
    virtual Task<Result<void, InstanceError>> claim(Handler handler) = 0;
    /// Asks the running instance, which may be in another process; ends once it has answered.
    virtual Task<Result<void, InstanceError>> ask(InstanceRequest request) = 0;
};

} // namespace vocalith
