#include "ports/RunningInstance.h"

namespace vocalith {

std::string userMessage(const InstanceError& error)
{
    using Kind = InstanceError::Kind;
    switch (error.kind) {
    case Kind::noBus:
        return "There is no session bus (D-Bus) here, through which commands reach the running Vocalith. Run this "
               "inside your desktop session.";
    case Kind::taken: return "Vocalith is running already.";
    case Kind::notRunning: return "Vocalith is not running. Start it with: vocalith run";
    case Kind::refused: return error.detail;
    case Kind::noReply: return "The running Vocalith does not answer. End it and start it again with: vocalith run";
    case Kind::failed: return "The running Vocalith could not be asked: " + error.detail;
    case Kind::cancelled: return "Cancelled";
    }
    return {};
}

} // namespace vocalith
