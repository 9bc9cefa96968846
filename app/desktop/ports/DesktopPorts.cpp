#include "app/desktop/ports/DesktopPorts.h"

#include "app/desktop/ports/MissingPorts.h"
#include "base/AtomicFile.h"
#include "platform/portal/bus/PortalConnection.h"
#include "platform/portal/remote/PortalKeyEvents.h"
#include "platform/portal/remote/PortalPasteboard.h"
#include "platform/portal/remote/PortalRemoteDesktop.h"
#include "platform/portal/shortcuts/PortalHotKeys.h"
#include "platform/wayland/WaylandConnection.h"
#include "platform/wayland/clipboard/WaylandPasteboard.h"
#include "platform/wayland/keyboard/WaylandInputSources.h"
#include "platform/wayland/keyboard/WaylandKeyEvents.h"
#include "platform/wayland/windows/LayerShellSurface.h"
#include "platform/wayland/windows/WaylandFocusedApp.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/clipboard/X11Pasteboard.h"
#include "platform/x11/hotkeys/X11HotKeys.h"
#include "platform/x11/keyboard/X11InputSources.h"
#include "platform/x11/keyboard/X11KeyEvents.h"
#include "platform/x11/windows/X11Compositing.h"
#include "platform/x11/windows/X11FocusedApp.h"
#include "ports/ApplicationID.h"

namespace vocalith {
namespace {

using State = Finding::State;

constexpr const char* kShortcuts = "Global shortcuts";
constexpr const char* kClipboard = "Clipboard";
constexpr const char* kKeys = "Insertion";
constexpr const char* kWindow = "Focused application";
constexpr const char* kOverlay = "Overlay";

} // namespace

struct DesktopPorts::Connections {
    std::unique_ptr<X11Connection> windows;
    std::unique_ptr<X11Connection> keys;
    std::unique_ptr<X11Connection> clipboard; ///< a selection owner sees its readers only on a connection of its own
    std::unique_ptr<WaylandConnection> wayland;
    std::unique_ptr<PortalConnection> portals;
    std::unique_ptr<PortalRemoteDesktop> remoteDesktop;
};

DesktopPorts::DesktopPorts(AppPaths paths, Clock& clock, const LogService& log)
    : m_paths(std::move(paths)), m_clock(clock), m_log(log), m_connections(std::make_unique<Connections>()),
      m_accessibility(clock)
{}

Task<std::unique_ptr<DesktopPorts>> DesktopPorts::open(EnvironmentLookup environment, AppPaths paths, Clock& clock,
                                                       const LogService& log)
{
    std::unique_ptr<DesktopPorts> ports(new DesktopPorts(std::move(paths), clock, log));
    const std::string wayland = environment("WAYLAND_DISPLAY").value_or("");
    const std::string display = environment("DISPLAY").value_or("");
    if (!wayland.empty())
        ports->serveWayland(display);
    if (ports->isReached())
        co_await ports->servePortals(display);
    else if (!display.empty())
        ports->serveX11(display);
    ports->serveNothing();
    co_return std::move(ports);
}

DesktopPorts::~DesktopPorts() = default;

void DesktopPorts::found(const char* subject, State state, std::string detail, std::string remedy)
{
    m_findings.push_back({subject, state, std::move(detail), std::move(remedy)});
}

void DesktopPorts::foundNoDisplay(std::string detail)
{
    found("Display", State::missing, std::move(detail), "Start Vocalith from within your desktop session.");
}

bool DesktopPorts::isComposited() const
{
    return !m_connections->windows || vocalith::isComposited(*m_connections->windows);
}

void DesktopPorts::serveX11(const std::string& display)
{
    auto windows = X11Connection::open(display, m_log.logger("x11"));
    auto keys = X11Connection::open(display, m_log.logger("x11 keys"));
    auto clipboard = X11Connection::open(display, m_log.logger("x11 clipboard"));
    auto hotKeys = X11HotKeys::open(display, m_log.logger("x11 shortcuts"));
    if (!windows || !keys || !clipboard || !hotKeys) {
        foundNoDisplay(windows ? "it takes no more connections" : windows.error());
        return;
    }
    m_isReached = true;
    m_findings.clear(); // of a Wayland session that has ended
    m_connections->windows = std::move(*windows);
    m_connections->keys = std::move(*keys);
    m_connections->clipboard = std::move(*clipboard);
    m_hotKeys = std::move(*hotKeys);
    m_canWatchModifiers = true;
    m_pasteboard = std::make_unique<X11Pasteboard>(*m_connections->clipboard, m_clock, m_log.logger("x11 clipboard"));
    m_keyEvents = std::make_unique<X11KeyEvents>(*m_connections->keys, m_clock, m_log.logger("x11 keys"));
    m_inputSources = std::make_unique<X11InputSources>(*m_connections->windows);
    m_focusedApp = std::make_unique<X11FocusedApp>(*m_connections->windows);
    found(kShortcuts, State::good, "X11 key grabs, modifier keys alone too");
    found(kClipboard, State::good, "X11 selections, all types kept");
    found(kKeys, State::good, "X11 synthetic keys (XTEST)");
    found(kWindow, State::good, "window manager hints (EWMH)");
    found(kOverlay, State::good, isComposited() ? "a window" : "a window, cut to its shape: no compositor is running");
}

void DesktopPorts::serveWayland(const std::string& x11Display)
{
    auto opened = WaylandConnection::open({}, m_log.logger("wayland"));
    if (!opened) {
        foundNoDisplay(opened.error());
        return;
    }
    m_isReached = true;
    auto& wayland = *(m_connections->wayland = std::move(*opened));
    m_inputSources = std::make_unique<WaylandInputSources>();
    if (WaylandPasteboard::isOffered(wayland)) {
        m_pasteboard = std::make_unique<WaylandPasteboard>(wayland, m_clock, m_log.logger("wayland clipboard"));
        found(kClipboard, State::good, "Wayland data control, all types kept");
    }
    if (WaylandKeyEvents::isOffered(wayland)) {
        m_keyEvents = std::make_unique<WaylandKeyEvents>(wayland, m_clock);
        found(kKeys, State::good, "Wayland virtual keyboard");
    }
    if (WaylandFocusedApp::isOffered(wayland)) {
        m_focusedApp = std::make_unique<WaylandFocusedApp>(wayland);
        found(kWindow, State::good, "Wayland foreign toplevels");
    }
    if (LayerShellSurface::isOffered(wayland)) {
        m_overlaySurface = std::make_unique<LayerShellSurface>(wayland, m_log.logger("wayland overlay"));
        found(kOverlay, State::good, "Wayland layer surface");
    } else if (!x11Display.empty() && X11Connection::open(x11Display)) {
        found(kOverlay, State::good, "a window through XWayland");
    } else {
        found(kOverlay, State::limited, "a window that may take the focus, so that texts go astray",
              "Let your desktop run XWayland (package xwayland).");
    }
}

Task<void> DesktopPorts::servePortals(std::string x11Display)
{
    auto& portals = m_connections->portals;
    portals = std::make_unique<PortalConnection>(kApplicationID, std::string(), m_log.logger("portal"));
    const auto offer = co_await portals->offer();
    if (offer.globalShortcuts > 0) {
        m_hotKeys = std::make_unique<PortalHotKeys>(*portals, m_tasks, m_log.logger("portal shortcuts"));
        found(kShortcuts, State::good, "GlobalShortcuts portal; keys are chosen in the desktop's own window");
    }
    if (!m_keyEvents && offer.remoteDesktop > 0)
        serveRemoteDesktop(offer.clipboard > 0);
    if (!m_pasteboard && !x11Display.empty()) {
        const bool isNewerBetter = offer.remoteDesktop > 0; // there is only no portal for the clipboard yet
        serveXWaylandClipboard(x11Display, isNewerBetter);
    }
}

void DesktopPorts::serveRemoteDesktop(bool hasClipboard)
{
    const auto tokenFile = m_paths.logFile.parent_path() / "remote-desktop-token";
    const auto storeToken = [tokenFile, logger = m_log.logger("portal")](const std::string& token) {
        const auto stored = writeFileAtomically(tokenFile, token);
        if (!stored)
            logger.warning("The desktop will ask again: " + toString(stored.error()));
    };
    const auto token = readWholeFile(tokenFile).value_or("");
    m_connections->remoteDesktop =
        std::make_unique<PortalRemoteDesktop>(*m_connections->portals, token, storeToken, m_log.logger("portal keys"));
    m_keyEvents = std::make_unique<PortalKeyEvents>(*m_connections->remoteDesktop);
    if (token.empty())
        found(kKeys, State::limited, "RemoteDesktop portal, not allowed so far",
              "Start Vocalith and allow remote control when the desktop asks: vocalith run");
    else
        found(kKeys, State::good, "RemoteDesktop portal, allowed before");
    if (m_pasteboard || !hasClipboard)
        return;
    m_pasteboard =
        std::make_unique<PortalPasteboard>(*m_connections->remoteDesktop, m_clock, m_log.logger("portal clipboard"));
    found(kClipboard, State::good, "Clipboard portal, all types kept");
}

void DesktopPorts::serveXWaylandClipboard(const std::string& display, bool isNewerBetter)
{
    auto clipboard = X11Connection::open(display, m_log.logger("x11 clipboard"));
    if (!clipboard)
        return;
    m_connections->clipboard = std::move(*clipboard);
    m_pasteboard = std::make_unique<X11Pasteboard>(*m_connections->clipboard, m_clock, m_log.logger("x11 clipboard"));
    found(kClipboard, State::limited, "through XWayland",
          isNewerBetter ? "A newer xdg-desktop-portal gives direct access." : "");
}

void DesktopPorts::askForConsent()
{
    if (m_connections->remoteDesktop)
        m_tasks.start(obtainConsent());
}

void DesktopPorts::renewConsent()
{
    if (m_wasAllowed && !m_connections->remoteDesktop->hasKeyboard())
        askForConsent();
}

Task<void> DesktopPorts::obtainConsent()
{
    const auto granted = co_await m_connections->remoteDesktop->start();
    m_wasAllowed = granted.has_value();
    if (!granted)
        m_log.logger("portal keys").warning(userMessage(granted.error()));
}

Task<void> DesktopPorts::shutDown()
{
    m_tasks.requestStop();
    co_await m_tasks.untilEmpty();
    co_await m_accessibility.shutDown();
}

void DesktopPorts::serveNothing()
{
    const auto found = [&](const char* subject, State state, std::string detail, std::string remedy = {}) {
        if (m_isReached) // else all of it is missing for that one reason
            this->found(subject, state, std::move(detail), std::move(remedy));
    };
    m_hasHotKeys = m_hotKeys != nullptr;
    if (!m_hotKeys) {
        m_hotKeys = std::make_unique<NoHotKeys>();
        found(kShortcuts, State::limited, "this desktop offers none to programs",
              "Bind \"vocalith toggle\" to a key in your desktop's own settings; it does all that a shortcut does.");
    }
    constexpr const char* kInHistory = "Find dictated texts with: vocalith history show last";
    const bool hasPasteboard = m_pasteboard != nullptr;
    if (!m_pasteboard) {
        m_pasteboard = std::make_unique<NoPasteboard>();
        found(kClipboard, State::missing, "none that can be reached", kInHistory);
    }
    if (!m_keyEvents) {
        m_keyEvents = std::make_unique<NoKeyEvents>();
        found(kKeys, State::missing, "this desktop lets nobody press keys",
              hasPasteboard ? "Paste dictated texts yourself: they are put on the clipboard." : kInHistory);
    }
    if (!m_inputSources)
        m_inputSources = std::make_unique<NoInputSources>();
    if (!m_focusedApp) {
        m_focusedApp = std::make_unique<NoFocusedApp>();
        found(kWindow, State::limited, "this desktop does not say which window has the focus");
    }
}

} // namespace vocalith
