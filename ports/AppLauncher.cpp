#include "ports/AppLauncher.h"

namespace vocalith {

std::string userMessage(const AppLaunchError& error)
{
    switch (error.kind) {
    case AppLaunchError::Kind::notFound:
        return error.detail.empty() ? "Nothing on this desktop opens it." : error.detail;
    case AppLaunchError::Kind::failed:
        return error.detail.empty() ? "It could not be started, and nothing says why." : error.detail;
    case AppLaunchError::Kind::cancelled: return "Cancelled";
    }
    return {};
}

} // namespace vocalith
