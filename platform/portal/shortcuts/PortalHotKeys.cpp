#include "platform/portal/shortcuts/PortalHotKeys.h"

#include "base/MainThread.h"
#include "models/KeyboardShortcutText.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"
#include "platform/portal/bus/PortalBus_p.h"
#include "platform/portal/bus/PortalConnection.h"
#include "platform/portal/remote/PortalKeySymbols_p.h"
#include "platform/portal/shortcuts/PortalShortcut_p.h"

#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusObjectPath>

#include <algorithm>
#include <fmt/format.h>
#include <vector>

namespace vocalith {
namespace {

using Kind = HotKeyError::Kind;

constexpr const char* kInstead = "Bind the command `vocalith toggle`, or `vocalith start` and `vocalith stop`, to keys "
                                 "in the settings of your desktop instead.";

HotKeyError unsupported(const std::string& reason)
{
    return {Kind::unsupported, 0, reason + " " + kInstead};
}

HotKeyError errorOf(const PortalError& error)
{
    switch (error.kind) {
    case PortalError::Kind::unavailable: return unsupported("It has no portal for shortcuts.");
    case PortalError::Kind::refused:
        return {Kind::failed, 0, std::string("the question about it was declined. ") + kInstead};
    case PortalError::Kind::failed: return {Kind::failed, 0, error.detail + ". " + kInstead};
    case PortalError::Kind::cancelled: break;
    }
    return {};
}

/// Keys that people type with, which one program must not take away from all others.
bool isForTyping(const KeyboardShortcut::Keys& keys)
{
    constexpr auto lifting = modifier_flags::control | modifier_flags::option | modifier_flags::command;
    return (keys.rawFlags & lifting) == 0 && !isFunctionKey(*keys.keyCode);
}

std::vector<PortalShortcut> shortcutsIn(const QVariant& list)
{
    const auto shortcuts = qdbus_cast<QList<PortalShortcut>>(list);
    return {shortcuts.begin(), shortcuts.end()};
}

} // namespace

/// The portal's session, made anew whenever there are other shortcuts than it was made for.
class PortalHotKeys::Session : public std::enable_shared_from_this<Session> {
public:
    struct Registered {
        HotKey hotKey;
        Handler handler;
        bool isDown = false;
    };

    Session(PortalHotKeys& owner, PortalConnection& portals, TaskScope& tasks, Logger logger);
    ~Session() { close(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Subscription add(const HotKey& hotKey, Handler handler);
    const std::map<Uuid, std::string>& triggers() const { return m_triggers; }
    void detach() { m_owner = nullptr; }

private:
    void scheduleBind();
    bool isBound() const;
    static Task<void> bindAll(std::shared_ptr<Session> self);
    Task<void> bindOnce();
    void handleKey(const QDBusMessage& message, bool isDown);
    void setTriggers(const std::vector<PortalShortcut>& shortcuts);
    void fail(const PortalError& error);
    void lose(const HotKeyError& error);
    void releaseKeys();
    void close();

    PortalHotKeys* m_owner;
    PortalBus& m_bus;
    TaskScope& m_tasks;
    const Logger m_logger;
    std::vector<std::shared_ptr<Registered>> m_registered;
    std::vector<HotKey> m_bound; ///< what the session was made for
    std::map<Uuid, std::string> m_triggers;
    QString m_path;
    bool m_isScheduled = false;
    bool m_isBinding = false;
    std::unique_ptr<DBusSignal> m_onActivated;
    std::unique_ptr<DBusSignal> m_onDeactivated;
    std::unique_ptr<DBusSignal> m_onChanged;
    std::unique_ptr<DBusSignal> m_onClosed;
    Subscription m_onVanished;
};

PortalHotKeys::Session::Session(PortalHotKeys& owner, PortalConnection& portals, TaskScope& tasks, Logger logger)
    : m_owner(&owner), m_bus(portals.bus()), m_tasks(tasks), m_logger(std::move(logger))
{
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    const auto listen = [this](const char* name, DBusSignal::Handler handler) {
        return m_bus.onSignal(QLatin1String(portal::globalShortcuts), QLatin1String(name), std::move(handler));
    };
    m_onActivated = listen("Activated", [this](const auto& message) { handleKey(message, true); });
    m_onDeactivated = listen("Deactivated", [this](const auto& message) { handleKey(message, false); });
    m_onChanged = listen("ShortcutsChanged", [this](const auto& message) {
        if (qvariant_cast<QDBusObjectPath>(message.arguments().value(0)).path() == m_path)
            setTriggers(shortcutsIn(message.arguments().value(1)));
    });
    m_onVanished = m_bus.vanished.subscribe([this] {
        if (!m_path.isEmpty())
            lose({Kind::failed, 0, "the desktop's portals ended"});
    });
}

Subscription PortalHotKeys::Session::add(const HotKey& hotKey, Handler handler)
{
    auto registered = std::make_shared<Registered>(Registered{hotKey, std::move(handler)});
    m_registered.push_back(registered);
    scheduleBind();
    const auto forget = [self = weak_from_this(), gone = registered.get()](void*) {
        const auto session = self.lock();
        if (!session)
            return;
        std::erase_if(session->m_registered, [gone](const auto& one) { return one.get() == gone; });
        session->scheduleBind();
    };
    return Subscription(std::shared_ptr<void>(registered.get(), forget));
}

void PortalHotKeys::Session::scheduleBind()
{
    if (std::exchange(m_isScheduled, true))
        return;
    postToMainThread([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self)
            return;
        self->m_isScheduled = false;
        if (!self->m_isBinding && self->m_owner && !self->isBound())
            self->m_tasks.start(bindAll(self));
    });
}

/// Whether the session serves all that is registered. One that serves more is good enough: what nobody asked for any
/// more is ignored, and the user is not asked again when it comes back.
bool PortalHotKeys::Session::isBound() const
{
    return std::ranges::all_of(
        m_registered, [this](const auto& one) { return std::ranges::find(m_bound, one->hotKey) != m_bound.end(); });
}

Task<void> PortalHotKeys::Session::bindAll(std::shared_ptr<Session> self)
{
    const auto stop = co_await currentStopToken();
    self->m_isBinding = true;
    while (self->m_owner && !self->isBound() && !stop.stop_requested())
        co_await self->bindOnce();
    self->m_isBinding = false;
}

Task<void> PortalHotKeys::Session::bindOnce()
{
    releaseKeys();
    close();
    QList<PortalShortcut> shortcuts;
    for (const auto& registered : m_registered) {
        const auto& hotKey = registered->hotKey;
        QVariantMap properties;
        properties.insert(QStringLiteral("description"), QString::fromStdString(hotKey.description));
        if (const auto trigger = triggerText(hotKey.keys); !trigger.empty())
            properties.insert(QStringLiteral("preferred_trigger"), QString::fromStdString(trigger));
        shortcuts.append({QString::fromStdString(hotKey.shortcutID.toString()), properties});
        m_bound.push_back(hotKey);
    }
    const QString interface = QLatin1String(portal::globalShortcuts);
    const auto created = co_await m_bus.createSession(interface);
    if (!created)
        co_return fail(created.error());
    m_path = *created;
    m_onClosed = m_bus.onClosed(m_path, [this] { lose({Kind::failed, 0, "the desktop has taken it away"}); });

    const QString bind = QStringLiteral("BindShortcuts");
    const QVariantList arguments{QVariant::fromValue(QDBusObjectPath(m_path)), QVariant::fromValue(shortcuts),
                                 QString()};
    const QVariantMap options;
    const auto bound = co_await m_bus.request(interface, bind, arguments, options);
    if (!bound)
        co_return fail(bound.error());
    // Some portals answer with nothing, some with what was asked for: the list is what holds.
    const QString list = QStringLiteral("ListShortcuts");
    const QVariantList session{QVariant::fromValue(QDBusObjectPath(m_path))};
    const auto listed = co_await m_bus.request(interface, list, session, options);
    const auto key = QStringLiteral("shortcuts");
    setTriggers(shortcutsIn(listed && listed->contains(key) ? listed->value(key) : bound->value(key)));
}

void PortalHotKeys::Session::setTriggers(const std::vector<PortalShortcut>& shortcuts)
{
    m_triggers.clear();
    for (const auto& shortcut : shortcuts) {
        const auto trigger = shortcut.properties.value(QStringLiteral("trigger_description")).toString().toStdString();
        if (const auto id = Uuid::parse(shortcut.id.toStdString()))
            m_triggers[*id] = trigger;
        m_logger.info(fmt::format("Shortcut {}: {}", shortcut.id.toStdString(), trigger));
    }
    if (m_owner)
        m_owner->triggersChanged.emit();
}

void PortalHotKeys::Session::handleKey(const QDBusMessage& message, bool isDown)
{
    const auto arguments = message.arguments();
    if (m_path.isEmpty() || qvariant_cast<QDBusObjectPath>(arguments.value(0)).path() != m_path)
        return;
    const auto text = arguments.value(1).toString().toStdString();
    const auto id = Uuid::parse(text);
    if (!id) {
        m_logger.error(fmt::format("Failed to get event parameter (status=no shortcut is \"{}\")", text));
        return;
    }
    const auto registered = m_registered; // which the handlers may change
    for (const auto& one : registered) {
        if (one->hotKey.shortcutID == *id && std::exchange(one->isDown, isDown) != isDown)
            one->handler(isDown);
    }
}

void PortalHotKeys::Session::fail(const PortalError& error)
{
    if (error.kind != PortalError::Kind::cancelled) // which is the end of the program, and nobody's failure
        lose(errorOf(error));
}

/// Ends the session and tells everybody who had counted on it.
void PortalHotKeys::Session::lose(const HotKeyError& error)
{
    const auto registered = m_registered;
    const auto bound = m_bound;
    close();
    m_bound = bound; // so that the user is not asked the same again
    m_logger.error(fmt::format("The shortcuts failed: {}", error.detail));
    releaseKeys();
    for (const auto& one : registered) {
        if (m_owner)
            m_owner->failed.emit(one->hotKey.shortcutID, error);
    }
}

/// The session will not tell of the release of a key that is held any more, and a dictation may wait for that.
void PortalHotKeys::Session::releaseKeys()
{
    const auto registered = m_registered; // which the handlers may change
    for (const auto& one : registered) {
        if (std::exchange(one->isDown, false))
            one->handler(false);
    }
}

void PortalHotKeys::Session::close()
{
    m_onClosed.reset();
    m_bound.clear();
    m_triggers.clear();
    if (!m_path.isEmpty())
        m_bus.closeSession(std::exchange(m_path, {}));
}

PortalHotKeys::PortalHotKeys(PortalConnection& portals, TaskScope& tasks, Logger logger)
    : m_session(std::make_shared<Session>(*this, portals, tasks, std::move(logger)))
{}

PortalHotKeys::~PortalHotKeys()
{
    m_session->detach();
}

Result<Subscription, HotKeyError> PortalHotKeys::registerHotKey(const HotKey& hotKey, Handler handler)
{
    if (!hotKey.keys.keyCode)
        return failure(unsupported("It has no shortcuts of modifier keys alone."));
    if (isForTyping(hotKey.keys))
        return failure(unsupported("It would take the key away from all other programs."));
    return m_session->add(hotKey, std::move(handler));
}

Result<Subscription, HotKeyError> PortalHotKeys::monitorModifiers(std::function<void(const ModifierChange&)>)
{
    return failure(unsupported("It has no shortcuts of modifier keys alone."));
}

const std::map<Uuid, std::string>& PortalHotKeys::triggers() const
{
    return m_session->triggers();
}

} // namespace vocalith
