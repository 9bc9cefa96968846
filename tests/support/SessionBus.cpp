#include "tests/support/SessionBus.h"

#include "base/Uuid.h"
#include "tests/support/MainLoop.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <QThread>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusVirtualObject>

#include <filesystem>

namespace vocalith::test {
namespace {

/// It starts no services of the machine.
constexpr const char* kConfiguration =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>unix:path={}</listen>
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy>
</busconfig>
)";

} // namespace

SessionBus::SessionBus()
{
    const auto socket = (m_folder / "bus").string();
    m_address = "unix:path=" + socket;
    writeFile(m_folder / "bus.conf", fmt::format(kConfiguration, socket));
    const auto output = m_folder / "output";
    m_daemon = ChildProcess(
        {"dbus-daemon", "--nofork", "--print-address=1", "--config-file=" + (m_folder / "bus.conf").string()},
        {"PATH=/usr/bin:/bin"}, output);
    // It prints its address once it listens; the socket is there a little earlier.
    runUntil([&] { return std::filesystem::exists(output) && readFile(output).find('\n') != std::string::npos; });
}

QDBusConnection connectTo(const std::string& address)
{
    auto connection = QDBusConnection::connectToBus(QString::fromStdString(address),
                                                    QString::fromStdString(Uuid::random().toString()));
    EXPECT_TRUE(connection.isConnected());
    return connection;
}

class BusService::Node final : public QDBusVirtualObject {
public:
    explicit Node(BusService& service) : m_service(service) {}

    QString introspect(const QString& path) const override
    {
        return path == m_service.m_description.path ? m_service.m_description.introspection : QString();
    }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        if (message.interface() == QLatin1String("org.freedesktop.DBus.Introspectable"))
            return false; // answered from `introspect`
        const Call call{message.member(), message.arguments(), message.service()};
        {
            const std::lock_guard lock(m_service.m_mutex);
            m_service.m_calls.push_back(call);
        }
        const auto answer = m_service.m_answer(call);
        return connection.send(answer ? message.createReply(*answer)
                                      : message.createErrorReply(QStringLiteral("org.test.Refused"),
                                                                 QStringLiteral("it was told to refuse")));
    }

private:
    BusService& m_service;
};

BusService::BusService(const std::string& address, Description description, Answer answer)
    : m_description(std::move(description)), m_answer(std::move(answer)),
      m_connection(std::make_unique<QDBusConnection>(connectTo(address))), m_thread(std::make_unique<QThread>()),
      m_node(std::make_unique<Node>(*this))
{
    m_node->moveToThread(m_thread.get());
    m_thread->start();
    EXPECT_TRUE(m_connection->registerVirtualObject(m_description.path, m_node.get()));
    EXPECT_TRUE(m_connection->registerService(m_description.name));
}

BusService::~BusService()
{
    m_connection->unregisterService(m_description.name);
    m_connection->unregisterObject(m_description.path);
    m_thread->quit();
    m_thread->wait();
    QDBusConnection::disconnectFromBus(m_connection->name());
}

std::vector<BusService::Call> BusService::calls(const QString& member) const
{
    const std::lock_guard lock(m_mutex);
    std::vector<Call> found;
    for (const auto& call : m_calls) {
        if (call.member == member)
            found.push_back(call);
    }
    return found;
}

void BusService::emitSignal(const QString& name, const QVariantList& arguments) const
{
    emitSignalOf(m_description.path, m_description.interface, name, arguments);
}

void BusService::emitSignalOf(const QString& path, const QString& interface, const QString& name,
                              const QVariantList& arguments) const
{
    auto signal = QDBusMessage::createSignal(path, interface, name);
    signal.setArguments(arguments);
    m_connection->send(signal);
}

} // namespace vocalith::test
