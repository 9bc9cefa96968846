#include "platform/x11/hotkeys/X11HotKeys.h"

#include "base/MainThread.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/hotkeys/X11ModifierMap.h"
#include "platform/x11/hotkeys/X11ModifierMonitor.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>

#include <map>
#include <utility>
#include <vector>

namespace vocalith {
namespace {

HotKeyError connectionLost()
{
    return {HotKeyError::Kind::failed, 0, "The connection to the X server is lost."};
}

} // namespace

/// The grabs and who asked for them.
class X11HotKeys::Grabs : public std::enable_shared_from_this<Grabs> {
public:
    Grabs(X11Connection& connection, Signal<Uuid, HotKeyError>& failed)
        : m_connection(connection), m_failed(failed), m_map(X11ModifierMap::read(connection.display()))
    {
        XkbSetDetectableAutoRepeat(display(), True, nullptr);
        int opcode = 0;
        int error = 0;
        XkbQueryExtension(display(), &opcode, &m_keyboardEvent, &error, nullptr, nullptr);
        const unsigned events = XkbNewKeyboardNotifyMask | XkbMapNotifyMask;
        XkbSelectEvents(display(), XkbUseCoreKbd, events, events);
        m_event = m_connection.event.subscribe([this](const XEvent& event) { handle(event); });
        m_lost = m_connection.lost.subscribe([this] { fail(); });
    }

    Result<Subscription, HotKeyError> add(const HotKey& hotKey, Handler handler);
    /// Whether a press of the key in this state is a hot key's.
    bool has(KeyCode code, unsigned state) const { return match(code, state) != nullptr; }

private:
    struct Registration {
        std::weak_ptr<Grabs> grabs;
        HotKey hotKey;
        Handler handler;
        KeyCode code = 0;
        unsigned mask = 0;
        ~Registration()
        {
            if (const auto alive = grabs.lock())
                alive->ungrab(*this);
        }
    };
    struct Held {
        std::weak_ptr<Registration> registration;
        unsigned mask;
    };
    using Registrations = std::vector<std::shared_ptr<Registration>>;

    Display* display() const { return m_connection.display(); }
    Registrations alive() const;
    std::shared_ptr<Registration> find(KeyCode code, unsigned state, unsigned ignored) const;
    std::shared_ptr<Registration> match(KeyCode code, unsigned eventState) const;
    int grab(const Registration& registration);
    void ungrab(const Registration& registration);
    void handle(const XEvent& event);
    void pressed(const XKeyEvent& event);
    void released(KeyCode code);
    void keyboardChanged(const XEvent& event);
    void followKeyboard();
    void fail();

    X11Connection& m_connection;
    Signal<Uuid, HotKeyError>& m_failed;
    X11ModifierMap m_map;
    int m_keyboardEvent = 0; ///< the number of the keyboard extension's events
    bool m_isFollowing = false;
    std::vector<std::weak_ptr<Registration>> m_registrations;
    std::map<KeyCode, Held> m_held;
    Subscription m_event;
    Subscription m_lost;
};

Result<Subscription, HotKeyError> X11HotKeys::Grabs::add(const HotKey& hotKey, Handler handler)
{
    if (m_connection.isLost())
        return failure(connectionLost());
    const auto code = hotKey.keys.keyCode ? m_connection.keyCode(*hotKey.keys.keyCode) : std::nullopt;
    const auto mask = m_map.mask(hotKey.keys.rawFlags);
    if (!code || !mask)
        return failure(HotKeyError{HotKeyError::Kind::unknownKey});
    // The server would not mind; which of the two is meant could not be told.
    if (find(*code, *mask, 0))
        return failure(HotKeyError{HotKeyError::Kind::failed, 0, "It is set up already."});

    auto registration = std::make_shared<Registration>();
    registration->hotKey = hotKey;
    registration->handler = std::move(handler);
    registration->code = *code;
    registration->mask = *mask;
    if (const int error = grab(*registration)) {
        const auto kind = error == BadAccess ? HotKeyError::Kind::taken : HotKeyError::Kind::failed;
        return failure(HotKeyError{kind, error, "The X server refused to give the key away."});
    }
    registration->grabs = weak_from_this();
    std::erase_if(m_registrations, [](const auto& each) { return each.expired(); });
    m_registrations.push_back(registration);
    return Subscription(std::move(registration));
}

X11HotKeys::Grabs::Registrations X11HotKeys::Grabs::alive() const
{
    Registrations found;
    for (const auto& each : m_registrations) {
        if (auto registration = each.lock())
            found.push_back(std::move(registration));
    }
    return found;
}

/// `ignored` are modifiers that may be held or not.
std::shared_ptr<X11HotKeys::Grabs::Registration> X11HotKeys::Grabs::find(KeyCode code, unsigned state,
                                                                         unsigned ignored) const
{
    for (auto& registration : alive()) {
        if (registration->code == code && (registration->mask & ~ignored) == (state & ~ignored))
            return registration;
    }
    return nullptr;
}

std::shared_ptr<X11HotKeys::Grabs::Registration> X11HotKeys::Grabs::match(KeyCode code, unsigned eventState) const
{
    const unsigned state = m_map.withoutLocks(eventState);
    auto registration = find(code, state, 0);
    if (registration || m_held.empty())
        return registration;
    unsigned ignored = 0;
    for (const auto& [other, held] : m_held)
        ignored |= held.mask;
    return find(code, state, ignored);
}

/// Yields the code of the server's error, or 0.
int X11HotKeys::Grabs::grab(const Registration& registration)
{
    X11ErrorTrap trap(m_connection);
    for (const unsigned locks : m_map.lockCombinations())
        XGrabKey(display(), registration.code, registration.mask | locks, m_connection.root(), False, GrabModeAsync,
                 GrabModeAsync);
    const int error = trap.finish();
    if (error != 0)
        ungrab(registration);
    return error;
}

void X11HotKeys::Grabs::ungrab(const Registration& registration)
{
    if (m_connection.isLost())
        return;
    for (const unsigned locks : m_map.lockCombinations())
        XUngrabKey(display(), registration.code, registration.mask | locks, m_connection.root());
    XFlush(display()); // whoever is about to get the key must not wait for our next turn
}

void X11HotKeys::Grabs::handle(const XEvent& event)
{
    if (event.type == KeyPress)
        pressed(event.xkey);
    else if (event.type == KeyRelease)
        released(static_cast<KeyCode>(event.xkey.keycode));
    else if (event.type == m_keyboardEvent || event.type == MappingNotify)
        keyboardChanged(event);
}

void X11HotKeys::Grabs::pressed(const XKeyEvent& event)
{
    const auto code = static_cast<KeyCode>(event.keycode);
    if (m_held.contains(code)) // it repeats
        return;
    const auto registration = match(code, event.state);
    if (!registration)
        return;
    m_held[code] = {registration, registration->mask};
    registration->handler(true);
}

void X11HotKeys::Grabs::released(KeyCode code)
{
    const auto held = m_held.extract(code);
    if (held.empty())
        return;
    if (const auto registration = held.mapped().registration.lock())
        registration->handler(false);
}

void X11HotKeys::Grabs::keyboardChanged(const XEvent& event)
{
    if (event.type == m_keyboardEvent) {
        auto change = event;
        XkbRefreshKeyboardMapping(reinterpret_cast<XkbMapNotifyEvent*>(&change));
    }
    // One change of the layout comes as many events.
    if (std::exchange(m_isFollowing, true))
        return;
    postToMainThread([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->followKeyboard();
    });
}

void X11HotKeys::Grabs::followKeyboard()
{
    m_isFollowing = false;
    if (m_connection.isLost())
        return;
    const auto map = X11ModifierMap::read(display());
    if (map == m_map)
        return;
    const auto registrations = alive();
    for (const auto& registration : registrations)
        ungrab(*registration);
    m_map = map;
    for (const auto& registration : registrations) {
        const auto mask = m_map.mask(registration->hotKey.keys.rawFlags);
        if (!mask) {
            m_failed.emit(registration->hotKey.shortcutID, HotKeyError{HotKeyError::Kind::unknownKey});
            continue;
        }
        registration->mask = *mask;
        if (const int error = grab(*registration))
            m_failed.emit(registration->hotKey.shortcutID, HotKeyError{HotKeyError::Kind::taken, error});
    }
}

void X11HotKeys::Grabs::fail()
{
    for (const auto& registration : alive())
        m_failed.emit(registration->hotKey.shortcutID, connectionLost());
}

/// One recording for all who watch the modifier keys, while there are any.
class X11HotKeys::Monitors : public std::enable_shared_from_this<Monitors> {
public:
    Monitors(X11Connection& connection, const std::shared_ptr<Grabs>& grabs, Logger logger)
        : m_connection(connection), m_grabs(grabs), m_logger(std::move(logger))
    {}

    Result<Subscription, HotKeyError> add(std::function<void(const ModifierChange&)> handler)
    {
        if (m_connection.isLost())
            return failure(connectionLost());
        if (!m_monitor) {
            auto monitor =
                X11ModifierMonitor::open(m_connection,
                                         {[this](const ModifierChange& change) { m_changed.emit(change); },
                                          [this](unsigned char code, unsigned state) { return isHotKey(code, state); }},
                                         m_logger);
            if (!monitor)
                return failure(monitor.error());
            m_monitor = std::move(*monitor);
        }
        ++m_watchers;
        return Subscription(std::make_shared<Watcher>(weak_from_this(), m_changed.subscribe(std::move(handler))));
    }

private:
    struct Watcher {
        Watcher(std::weak_ptr<Monitors> owner, Subscription subscription)
            : monitors(std::move(owner)), changes(std::move(subscription))
        {}
        ~Watcher()
        {
            // It may be the monitor's own call in which the last one goes.
            postToMainThread([weak = monitors] {
                const auto alive = weak.lock();
                if (alive && --alive->m_watchers == 0)
                    alive->m_monitor.reset();
            });
        }
        std::weak_ptr<Monitors> monitors;
        Subscription changes;
    };

    bool isHotKey(unsigned char code, unsigned state) const
    {
        const auto grabs = m_grabs.lock();
        return grabs && grabs->has(code, state);
    }

    X11Connection& m_connection;
    const std::weak_ptr<Grabs> m_grabs;
    const Logger m_logger;
    Signal<ModifierChange> m_changed;
    int m_watchers = 0; ///< those that are gone count until the event loop has run
    std::unique_ptr<X11ModifierMonitor> m_monitor;
};

Result<std::unique_ptr<X11HotKeys>, std::string> X11HotKeys::open(const std::string& display, Logger logger)
{
    auto connection = X11Connection::open(display, logger);
    if (!connection)
        return failure(connection.error());
    return std::unique_ptr<X11HotKeys>(new X11HotKeys(std::move(*connection), logger));
}

X11HotKeys::X11HotKeys(std::unique_ptr<X11Connection> connection, const Logger& logger)
    : m_connection(std::move(connection)), m_grabs(std::make_shared<Grabs>(*m_connection, failed)),
      m_monitors(std::make_shared<Monitors>(*m_connection, m_grabs, logger))
{}

X11HotKeys::~X11HotKeys() = default;

Result<Subscription, HotKeyError> X11HotKeys::registerHotKey(const HotKey& hotKey, Handler handler)
{
    return m_grabs->add(hotKey, std::move(handler));
}

Result<Subscription, HotKeyError> X11HotKeys::monitorModifiers(std::function<void(const ModifierChange&)> handler)
{
    return m_monitors->add(std::move(handler));
}

} // namespace vocalith
