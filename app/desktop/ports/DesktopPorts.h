#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "base/TaskScope.h"
#include "core/storage/AppPaths.h"
#include "platform/atspi/AtspiAccessibility.h"
#include "ports/Diagnostics.h"
#include "ports/FocusedApp.h"
#include "ports/HotKeys.h"
#include "ports/InputSources.h"
#include "ports/KeyEvents.h"
#include "ports/Pasteboard.h"
#include "ports/PixelSurface.h"

#include <memory>
#include <vector>

namespace vocalith {

/// The facilities of the desktop, each made real by what this session offers. Decided once, when it is opened; main
/// thread. Where nothing serves, an implementation stands there that says so whenever it is asked.
class DesktopPorts {
public:
    static Task<std::unique_ptr<DesktopPorts>> open(EnvironmentLookup environment, AppPaths paths, Clock& clock,
                                                    const LogService& log);
    ~DesktopPorts();
    DesktopPorts(const DesktopPorts&) = delete;
    DesktopPorts& operator=(const DesktopPorts&) = delete;

    HotKeys& hotKeys() const { return *m_hotKeys; }
    Pasteboard& pasteboard() const { return *m_pasteboard; }
    KeyEvents& keyEvents() const { return *m_keyEvents; }
    InputSources& inputSources() const { return *m_inputSources; }
    FocusedApp& focusedApp() const { return *m_focusedApp; }
    AtspiAccessibility& accessibility() { return m_accessibility; }
    /// Null where an ordinary window serves for the overlay.
    std::unique_ptr<PixelSurface> takeOverlaySurface() { return std::move(m_overlaySurface); }

    /// Asks the user for what the desktop grants only with their consent. It is asked once; later starts come with the
    /// answer. Returns at once.
    void askForConsent();
    /// Asks for it again where it was granted and the desktop has ended it since, usually without a question. Returns
    /// at once.
    void renewConsent();
    /// To be awaited before destruction.
    Task<void> shutDown();

    /// Whether there is a display that answers. Without one nothing serves.
    bool isReached() const { return m_isReached; }
    /// Whether this desktop listens for the user's shortcuts.
    bool hasHotKeys() const { return m_hasHotKeys; }
    /// Whether shortcuts can be made of modifier keys alone.
    bool canWatchModifiers() const { return m_canWatchModifiers; }
    /// Whether what is not drawn of a window lets the desktop shine through, now.
    bool isComposited() const;

    /// Which path serves for what, what is missing and how to mend it.
    const std::vector<Finding>& findings() const { return m_findings; }

private:
    struct Connections;

    DesktopPorts(AppPaths paths, Clock& clock, const LogService& log);
    void serveX11(const std::string& display);
    void serveWayland(const std::string& x11Display);
    Task<void> servePortals(std::string x11Display);
    void serveRemoteDesktop(bool hasClipboard);
    void serveXWaylandClipboard(const std::string& display, bool isNewerBetter);
    void serveNothing();
    void foundNoDisplay(std::string detail);
    Task<void> obtainConsent();
    void found(const char* subject, Finding::State state, std::string detail, std::string remedy = {});

    const AppPaths m_paths;
    Clock& m_clock;
    const LogService& m_log;
    TaskScope m_tasks;
    std::unique_ptr<Connections> m_connections; ///< outlive what uses them
    std::unique_ptr<HotKeys> m_hotKeys;
    std::unique_ptr<Pasteboard> m_pasteboard;
    std::unique_ptr<KeyEvents> m_keyEvents;
    std::unique_ptr<InputSources> m_inputSources;
    std::unique_ptr<FocusedApp> m_focusedApp;
    AtspiAccessibility m_accessibility;
    std::unique_ptr<PixelSurface> m_overlaySurface;
    bool m_isReached = false;
    bool m_hasHotKeys = false;
    bool m_canWatchModifiers = false;
    bool m_wasAllowed = false; ///< the user has consented to this run of the program
    std::vector<Finding> m_findings;
};

} // namespace vocalith
