#pragma once

#include "tests/support/FakePortal.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusVirtualObject>

#include <set>

namespace vocalith::test {

namespace fake_portal {
inline const auto path = QStringLiteral("/org/freedesktop/portal/desktop");
inline const auto prefix = QStringLiteral("org.freedesktop.portal.");

inline QVariant asPath(const QString& text)
{
    return QVariant::fromValue(QDBusObjectPath(text));
}
} // namespace fake_portal

/// The portals' object on the bus, and what the test's desktop is like.
class FakePortal::Service final : public QDBusVirtualObject {
public:
    Service(Desktop how, const std::string& address);
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    ~Service() override { QDBusConnection::disconnectFromBus(bus.name()); }

    /// a(sa{sv}), as the portal lists them.
    static QVariant listOf(const std::vector<Shortcut>& shortcuts);

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override;

    void emitFor(const QString& interface, const QString& name, const QString& session, const QVariantList& more);

    void tellOwner();

    Desktop desktop;
    QDBusConnection bus;
    std::vector<std::string> calls;
    std::string applicationID;
    std::set<QString> sessions;
    std::vector<Shortcut> shortcuts;
    QString shortcutSession;
    QString clipboardSession;
    int questions = 0;
    std::vector<std::string> keys;
    std::string token;                          ///< good for one session without a question
    std::string restoredToken;                  ///< of the session that is being made
    std::map<std::string, std::string> content; ///< what another program has copied
    bool isAnswering = true;
    std::vector<std::string> ours;
    struct Transfer {
        std::shared_ptr<Pasted> pasted;
        int pipe = -1;
    };
    std::map<unsigned, Transfer> transfers;

private:
    using Handler = void (Service::*)(const QDBusMessage&);

    bool serves(const QString& interface) const;

    bool reply(const QDBusMessage& message, const QVariantList& values) const;

    bool sendVersion(const QDBusMessage& message) const;

    /// Answers a request, first with its path and then with what the user says.
    void respond(const QDBusMessage& message, const QVariantMap& results, bool isAsked = false);

    void createSession(const QDBusMessage& message);
    void bindShortcuts(const QDBusMessage& message);
    void listShortcuts(const QDBusMessage& message);
    void selectDevices(const QDBusMessage& message);
    void requestClipboard(const QDBusMessage& message);
    void start(const QDBusMessage& message);
    void notifyKey(const QDBusMessage& message);
    void setSelection(const QDBusMessage& message);
    void selectionRead(const QDBusMessage& message);
    void selectionWrite(const QDBusMessage& message);
    void selectionWriteDone(const QDBusMessage& message);

    const std::map<QString, Handler> m_handlers{
        {"GlobalShortcuts.CreateSession", &Service::createSession},
        {"GlobalShortcuts.BindShortcuts", &Service::bindShortcuts},
        {"GlobalShortcuts.ListShortcuts", &Service::listShortcuts},
        {"RemoteDesktop.CreateSession", &Service::createSession},
        {"RemoteDesktop.SelectDevices", &Service::selectDevices},
        {"RemoteDesktop.Start", &Service::start},
        {"RemoteDesktop.NotifyKeyboardKeysym", &Service::notifyKey},
        {"RemoteDesktop.NotifyKeyboardKeycode", &Service::notifyKey},
        {"Clipboard.RequestClipboard", &Service::requestClipboard},
        {"Clipboard.SetSelection", &Service::setSelection},
        {"Clipboard.SelectionRead", &Service::selectionRead},
        {"Clipboard.SelectionWrite", &Service::selectionWrite},
        {"Clipboard.SelectionWriteDone", &Service::selectionWriteDone},
    };
    int m_sessionCount = 0;
    int m_tokenCount = 0;
};

} // namespace vocalith::test
