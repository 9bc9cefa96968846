#pragma once

#include "base/Result.h"
#include "base/Uuid.h"
#include "ports/RunningInstance.h"

#include <functional>
#include <string>

namespace vocalith {

class ConfigurationManager;
class OverlayManager;
class ScreenLock;
struct ShortcutNotifier;

/// Carries out what other processes ask of the running program: drives dictations through the same signals as a
/// shortcut does. While the screen is locked it begins none, as no shortcut does. Lives as long as the program; main
/// thread.
class RemoteControl {
public:
    /// `present` brings the program forward.
    RemoteControl(ShortcutNotifier& notifier, const OverlayManager& overlay, const ConfigurationManager& configuration,
                  const ScreenLock& screenLock, std::function<void()> present);

    /// An error is the sentence for the user.
    Result<void, std::string> carryOut(const InstanceRequest& request);
    /// From now on everything is refused: the program ends.
    void close() { m_isClosed = true; }

private:
    Result<void, std::string> start(const std::string& prompt);
    Result<void, std::string> stop();
    Result<void, std::string> cancel();
    Result<void, std::string> open(const std::string& link);
    /// That starts the named prompt; without a name the main shortcut.
    Result<Uuid, std::string> shortcutFor(const std::string& prompt) const;

    ShortcutNotifier& m_notifier;
    const OverlayManager& m_overlay;
    const ConfigurationManager& m_configuration;
    const ScreenLock& m_screenLock;
    const std::function<void()> m_present;
    bool m_isClosed = false;
};

} // namespace vocalith
