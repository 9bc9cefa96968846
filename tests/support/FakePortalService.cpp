#include "tests/support/FakePortalService_p.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusUnixFileDescriptor>
#include <QtDBus/QDBusVariant>

#include <array>
#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace vocalith::test {

using namespace fake_portal;

struct ListedShortcut {
    QString id;
    QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument& argument, const ListedShortcut& shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, ListedShortcut& shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

namespace {

QString pathIn(const QVariant& value)
{
    return qvariant_cast<QDBusObjectPath>(value).path();
}

std::vector<FakePortal::Shortcut> shortcutsIn(const QVariant& value)
{
    std::vector<FakePortal::Shortcut> shortcuts;
    for (const auto& [id, properties] : qdbus_cast<QList<ListedShortcut>>(value))
        shortcuts.push_back({id.toStdString(), properties.value("description").toString().toStdString(),
                             properties.value("preferred_trigger").toString().toStdString()});
    return shortcuts;
}

} // namespace

/// a(sa{sv}), as the portal lists them.
QVariant FakePortal::Service::listOf(const std::vector<FakePortal::Shortcut>& shortcuts)
{
    qDBusRegisterMetaType<ListedShortcut>();
    qDBusRegisterMetaType<QList<ListedShortcut>>();
    QList<ListedShortcut> list;
    for (const auto& shortcut : shortcuts)
        list << ListedShortcut{QString::fromStdString(shortcut.id),
                               {{"description", QString::fromStdString(shortcut.description)},
                                {"trigger_description", "Press " + QString::fromStdString(shortcut.trigger)}}};
    return QVariant::fromValue(list);
}

FakePortal::Service::Service(Desktop how, const std::string& address)
    : desktop(how),
      bus(QDBusConnection::connectToBus(QString::fromStdString(address), QString::fromStdString("fake" + address)))
{
    bus.registerVirtualObject(path, this, QDBusConnection::SubPath);
    bus.registerService("org.freedesktop.portal.Desktop");
}

bool FakePortal::Service::handleMessage(const QDBusMessage& message, const QDBusConnection&)
{
    if (message.interface() == "org.freedesktop.DBus.Properties")
        return sendVersion(message);
    const auto name = message.interface().section('.', -1) + '.' + message.member();
    calls.push_back(name.toStdString());
    if (name == "Registry.Register" && desktop.hasRegistry) {
        applicationID = message.arguments().value(0).toString().toStdString();
        return reply(message, {});
    }
    if (name == "Session.Close")
        return sessions.erase(message.path()) > 0;
    if (name == "Request.Close")
        return true;
    if (!serves(message.interface()))
        return false;
    if (desktop.insistsOnIdentifier && applicationID.empty())
        return bus.send(message.createErrorReply("org.freedesktop.portal.Error.NotAllowed", "An app id is required"));
    const auto handler = m_handlers.find(name);
    if (handler == m_handlers.end())
        return false;
    (this->*handler->second)(message);
    return true;
}

void FakePortal::Service::emitFor(const QString& interface, const QString& name, const QString& session,
                                  const QVariantList& more)
{
    auto signal = QDBusMessage::createSignal(path, prefix + interface, name);
    signal.setArguments(QVariantList{asPath(session)} + more);
    bus.send(signal);
}

void FakePortal::Service::tellOwner()
{
    if (clipboardSession.isEmpty())
        return;
    QStringList types;
    for (const auto& [type, bytes] : content)
        types << QString::fromStdString(type);
    for (const auto& type : ours)
        types << QString::fromStdString(type);
    QVariant list = types;
    if (desktop.wrapsTypes) {
        QDBusArgument wrapped;
        wrapped.beginStructure();
        wrapped << types;
        wrapped.endStructure();
        list = QVariant::fromValue(wrapped);
    }
    emitFor("Clipboard", "SelectionOwnerChanged", clipboardSession,
            {QVariantMap{{"mime_types", list}, {"session_is_owner", !ours.empty()}}});
}

bool FakePortal::Service::serves(const QString& interface) const
{
    return (interface == prefix + "GlobalShortcuts" && desktop.hasShortcuts) ||
           (interface == prefix + "RemoteDesktop" && desktop.hasRemoteDesktop) ||
           (interface == prefix + "Clipboard" && desktop.hasClipboard);
}

bool FakePortal::Service::reply(const QDBusMessage& message, const QVariantList& values) const
{
    return bus.send(message.createReply(values));
}

bool FakePortal::Service::sendVersion(const QDBusMessage& message) const
{
    if (!serves(message.arguments().value(0).toString()))
        return bus.send(message.createErrorReply(QDBusError::InvalidArgs, "No such interface"));
    return reply(message, {QVariant::fromValue(QDBusVariant(1U))});
}

void FakePortal::Service::respond(const QDBusMessage& message, const QVariantMap& results, bool isAsked)
{
    const auto options = qdbus_cast<QVariantMap>(message.arguments().last());
    const auto last = options.value("handle_token").toString();
    const auto sender = message.service().mid(1).replace('.', '_');
    const auto request = QStringLiteral("%1/request/%2/%3").arg(path, sender, last);
    reply(message, {asPath(request)});
    if (isAsked && desktop.neverAnswers)
        return;
    auto response = QDBusMessage::createSignal(request, prefix + "Request", "Response");
    const bool isDeclined = isAsked && desktop.saysNo;
    response << (isDeclined ? 1U : 0U) << (isDeclined ? QVariantMap() : results);
    bus.send(response);
}

void FakePortal::Service::createSession(const QDBusMessage& message)
{
    const auto options = qdbus_cast<QVariantMap>(message.arguments().last());
    const auto session = QStringLiteral("%1/session/s/%2%3")
                             .arg(path, options.value("session_handle_token").toString())
                             .arg(++m_sessionCount);
    sessions.insert(session);
    respond(message, {{"session_handle", session}});
}

void FakePortal::Service::bindShortcuts(const QDBusMessage& message)
{
    shortcutSession = pathIn(message.arguments().value(0));
    if (!desktop.saysNo)
        shortcuts = shortcutsIn(message.arguments().value(1));
    respond(message, {}, true);
}

void FakePortal::Service::listShortcuts(const QDBusMessage& message)
{
    respond(message, {{"shortcuts", listOf(shortcuts)}});
}

void FakePortal::Service::selectDevices(const QDBusMessage& message)
{
    const auto options = qdbus_cast<QVariantMap>(message.arguments().last());
    EXPECT_EQ(options.value("types").toUInt(), 1U);
    EXPECT_EQ(options.value("persist_mode").toUInt(), 2U);
    restoredToken = options.value("restore_token").toString().toStdString();
    respond(message, {});
}

void FakePortal::Service::requestClipboard(const QDBusMessage& message)
{
    clipboardSession = pathIn(message.arguments().value(0));
    reply(message, {});
}

void FakePortal::Service::start(const QDBusMessage& message)
{
    const bool isRestored = !token.empty() && restoredToken == token;
    if (!isRestored)
        ++questions;
    token = fmt::format("token {}", ++m_tokenCount);
    respond(message,
            {{"devices", 1U},
             {"clipboard_enabled", !clipboardSession.isEmpty()},
             {"restore_token", QString::fromStdString(token)}},
            !isRestored);
    tellOwner();
}

void FakePortal::Service::notifyKey(const QDBusMessage& message)
{
    const auto arguments = message.arguments();
    if (desktop.refusedKeys > 0) {
        --desktop.refusedKeys;
        bus.send(message.createErrorReply(QDBusError::Failed, "The session is locked"));
        return;
    }
    keys.push_back(fmt::format("{} {} {}", message.member() == "NotifyKeyboardKeysym" ? "keysym" : "keycode",
                               arguments.value(2).toInt(), arguments.value(3).toUInt() == 1 ? "down" : "up"));
    reply(message, {});
}

void FakePortal::Service::setSelection(const QDBusMessage& message)
{
    content.clear();
    ours.clear();
    const auto options = qdbus_cast<QVariantMap>(message.arguments().value(1));
    for (const auto& type : qdbus_cast<QStringList>(options.value("mime_types")))
        ours.push_back(type.toStdString());
    reply(message, {});
    tellOwner();
}

void FakePortal::Service::selectionRead(const QDBusMessage& message)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    const auto& bytes = content[message.arguments().value(1).toString().toStdString()];
    ASSERT_LT(bytes.size(), 60'000U) << "the pipe takes no more at once";
    if (isAnswering) {
        EXPECT_EQ(::write(ends[1], bytes.data(), bytes.size()), ssize_t(bytes.size()));
        ::close(ends[1]);
    } // else it stays open until the test has ended
    QDBusUnixFileDescriptor descriptor;
    descriptor.giveFileDescriptor(ends[0]);
    reply(message, {QVariant::fromValue(descriptor)});
}

void FakePortal::Service::selectionWrite(const QDBusMessage& message)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    transfers[message.arguments().value(1).toUInt()].pipe = ends[0];
    QDBusUnixFileDescriptor descriptor;
    descriptor.giveFileDescriptor(ends[1]);
    reply(message, {QVariant::fromValue(descriptor)});
}

void FakePortal::Service::selectionWriteDone(const QDBusMessage& message)
{
    auto& transfer = transfers[message.arguments().value(1).toUInt()];
    std::array<char, 4096> buffer{};
    for (ssize_t size = 0; transfer.pipe >= 0 && (size = ::read(transfer.pipe, buffer.data(), buffer.size())) > 0;)
        transfer.pasted->bytes.append(buffer.data(), static_cast<std::size_t>(size));
    transfer.pasted->isSuccess = message.arguments().value(2).toBool();
    transfer.pasted->isDone = true;
    if (transfer.pipe >= 0)
        ::close(transfer.pipe);
    reply(message, {});
}

} // namespace vocalith::test
