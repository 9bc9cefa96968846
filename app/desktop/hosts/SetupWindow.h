#pragma once

#include "app/desktop/hosts/MicrophoneMeter.h"
#include "base/Log.h"

#include <memory>
#include <string>

namespace vocalith {

class DesktopLook;
class PersistentAppStorage;
class ShortcutSuspension;

/// The window of the first start, made when it is wanted: for the main prompt's shortcut, the microphone and a try.
/// While it records a shortcut the user's shortcuts are given back to the desktop. Main thread.
class SetupWindow {
public:
    struct Services {
        PersistentAppStorage& storage;
        ShortcutSuspension& suspension;
        AudioInput& input;
        Clock& clock;
        DesktopLook& look;
        bool keyRequired; ///< this desktop cannot watch modifier keys alone
    };

    SetupWindow(Services services, Logger logger);
    ~SetupWindow();

    void show();
    /// Writes a dictated text where the window lets the user try. False when the user is not there, but elsewhere.
    bool insert(const std::string& text);
    /// To be awaited before destruction.
    Task<void> shutDown();

private:
    struct Window;

    const Services m_services;
    const Logger m_logger;
    MicrophoneMeter m_microphone;
    std::unique_ptr<Window> m_window;
};

} // namespace vocalith
