#pragma once

#include "base/Result.h"
#include "base/Task.h"

#include <string>

namespace vocalith {

struct AppLaunchError {
    enum class Kind {
        notFound, ///< no such application; nothing on this desktop opens such an address
        failed,   ///< `detail` says why, for people
        cancelled
    };
    Kind kind = Kind::failed;
    std::string detail{};
    bool operator==(const AppLaunchError&) const = default;
};

/// The sentence that is shown to the user: what is wrong and what to do about it.
std::string userMessage(const AppLaunchError& error);

/// Opens addresses and starts applications the way the user's desktop does. What was started runs on by itself and
/// outlives the program. Main thread; it outlives its tasks. A stop ends the wait, not what was started.
class AppLauncher {
public:
    virtual ~AppLauncher() = default;

    /// Opens a URL (RFC 3986), or the path of a file or folder, with the program that the desktop has for it.
    virtual Task<Result<void, AppLaunchError>> openURL(std::string url) = 0;
    /// Starts the application with that desktop entry ("org.mozilla.firefox", with or without ".desktop"; Desktop Entry
    /// Specification), or brings forward the one that runs where the application does so.
    virtual Task<Result<void, AppLaunchError>> launchApp(std::string bundleID) = 0;
};

} // namespace vocalith
