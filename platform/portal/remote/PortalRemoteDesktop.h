#pragma once

#include "base/Log.h"
#include "base/Observable.h"
#include "base/Task.h"
#include "ports/KeyEvents.h"

#include <functional>
#include <memory>
#include <string>

namespace vocalith {

class PortalBus;
class PortalConnection;

/// One session of the RemoteDesktop portal, with the keyboard and, where the Clipboard portal is there, the clipboard.
/// The desktop asks the user once; a token that it gives for that is handed back the next time, which makes it grant
/// the same without a question. PortalKeyEvents and PortalPasteboard work through it. Main thread; it outlives them.
class PortalRemoteDesktop {
public:
    /// Called with the token for the next time, each of which is good for once; the caller keeps it in a file.
    using StoreToken = std::function<void(const std::string& token)>;

    PortalRemoteDesktop(PortalConnection& portals, std::string restoreToken, StoreToken storeToken, Logger logger = {});
    ~PortalRemoteDesktop();

    /// Asks for the session, unless there is one; who asks meanwhile waits for the same answer. A stop ends the wait
    /// and, where nobody else waits, withdraws the question.
    Task<Result<void, KeyEventsError>> start();
    bool hasKeyboard() const;
    bool hasClipboard() const;
    Signal<> ended; ///< the user or the desktop has ended the session

    struct State;
    State& state() { return *m_state; } ///< for the classes of this folder

private:
    std::unique_ptr<State> m_state;
};

} // namespace vocalith
