#include "tests/support/StatusTray.h"

#include "tests/support/MainLoop.h"

#include <gtest/gtest.h>

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCall>
#include <QtDBus/QDBusVariant>

#include <algorithm>

namespace vocalith::test {
namespace {

const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kRegister = QStringLiteral("RegisterStatusNotifierItem");
const QString kMenu = QStringLiteral("com.canonical.dbusmenu");
const QString kMenuPath = QStringLiteral("/MenuBar"); // as Qt has it

BusService::Description watcher()
{
    return {kWatcher, QStringLiteral("/StatusNotifierWatcher"), kWatcher,
            QStringLiteral("<interface name='org.kde.StatusNotifierWatcher'>"
                           "<method name='RegisterStatusNotifierItem'><arg type='s' direction='in'/>"
                           "</method><property name='IsStatusNotifierHostRegistered' type='b' access='read'/>"
                           "</interface>")};
}

std::optional<QVariantList> answer(const BusService::Call& call)
{
    if (call.member == QLatin1String("Get"))
        return QVariantList{QVariant::fromValue(QDBusVariant(true))};
    return QVariantList();
}

void collect(const QDBusArgument& node, std::vector<StatusTray::Entry>& found)
{
    int id = 0;
    QVariantMap properties;
    QVariantList children;
    node.beginStructure();
    node >> id >> properties >> children;
    node.endStructure();
    const auto label = properties.value(QStringLiteral("label")).toString();
    if (!label.isEmpty())
        found.push_back({id, label.toStdString(), properties.value(QStringLiteral("enabled"), true).toBool()});
    for (const auto& child : children)
        collect(child.value<QDBusArgument>(), found);
}

} // namespace

StatusTray::StatusTray(const std::string& busAddress)
    : m_desktop(std::make_unique<QDBusConnection>(connectTo(busAddress))), m_service(busAddress, watcher(), answer)
{}

StatusTray::~StatusTray() = default;

std::size_t StatusTray::icons() const
{
    return m_service.calls(kRegister).size();
}

/// The program may be this very one: the wait lets it answer.
QDBusMessage StatusTray::ask(const QString& member, const QVariantList& arguments) const
{
    auto call = QDBusMessage::createMethodCall(m_service.calls(kRegister).back().sender, kMenuPath, kMenu, member);
    call.setArguments(arguments);
    const auto pending = m_desktop->asyncCall(call);
    runUntil([&] { return pending.isFinished(); });
    return pending.reply();
}

std::optional<std::vector<StatusTray::Entry>> StatusTray::menu() const
{
    const auto reply = ask(QStringLiteral("GetLayout"), {0, -1, QStringList()});
    if (reply.arguments().size() != 2)
        return std::nullopt;
    std::vector<Entry> found;
    collect(reply.arguments()[1].value<QDBusArgument>(), found);
    return found;
}

std::vector<std::string> StatusTray::titles() const
{
    std::vector<std::string> found;
    for (const auto& entry : menu().value_or(std::vector<Entry>()))
        found.push_back(entry.title);
    return found;
}

bool StatusTray::isEnabled(const std::string& title) const
{
    const auto entries = menu().value_or(std::vector<Entry>());
    const auto found = std::ranges::find(entries, title, &Entry::title);
    return found != entries.end() && found->isEnabled;
}

void StatusTray::click(const std::string& title) const
{
    const auto entries = menu().value_or(std::vector<Entry>());
    const auto found = std::ranges::find(entries, title, &Entry::title);
    if (found == entries.end()) {
        ADD_FAILURE() << "the menu has no " << title;
        return;
    }
    ask(QStringLiteral("Event"), {found->id, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0U});
    drainMainThread();
}

} // namespace vocalith::test
