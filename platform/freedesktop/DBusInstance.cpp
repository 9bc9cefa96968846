#include "platform/freedesktop/DBusInstance.h"

#include "base/OneShot.h"
#include "ports/ApplicationID.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusConnectionInterface>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>
#include <QtDBus/QDBusVirtualObject>

#include <array>

namespace vocalith {
namespace {

using Action = InstanceRequest::Action;
using Kind = InstanceError::Kind;

const QString kName = QLatin1String(kApplicationID); // also the interface
/// As an application that the desktop can start has it (Desktop Entry Specification, "D-Bus Activation").
const QString kPath = QLatin1Char('/') + QString(kName).replace(QLatin1Char('.'), QLatin1Char('/'));
constexpr const char* kApplication = "org.freedesktop.Application";
const QString kRefused = kName + QLatin1String(".Error.Refused");
constexpr int kPatienceMilliseconds = 3000;

constexpr const char* kIntrospection = R"(
<interface name="%1">
  <method name="Start"><arg name="prompt" type="s" direction="in"/></method>
  <method name="Stop"/>
  <method name="Toggle"><arg name="prompt" type="s" direction="in"/></method>
  <method name="Cancel"/>
  <method name="Present"/>
  <method name="Open"><arg name="link" type="s" direction="in"/></method>
</interface>
<interface name="org.freedesktop.Application">
  <method name="Activate"><arg name="platform_data" type="a{sv}" direction="in"/></method>
  <method name="Open">
    <arg name="uris" type="as" direction="in"/><arg name="platform_data" type="a{sv}" direction="in"/>
  </method>
  <method name="ActivateAction">
    <arg name="action_name" type="s" direction="in"/><arg name="parameter" type="av" direction="in"/>
    <arg name="platform_data" type="a{sv}" direction="in"/>
  </method>
</interface>
)";

struct Method {
    const char* name;
    Action action;
};

// The desktop entry's actions bear the same names.
constexpr std::array kMethods{
    Method{"Start", Action::start},   Method{"Stop", Action::stop},       Method{"Toggle", Action::toggle},
    Method{"Cancel", Action::cancel}, Method{"Present", Action::present}, Method{"Open", Action::open},
};

std::optional<Action> actionNamed(const QString& name)
{
    for (const auto& method : kMethods) {
        if (name.compare(QLatin1String(method.name), Qt::CaseInsensitive) == 0)
            return method.action;
    }
    return std::nullopt;
}

QString methodOf(Action action)
{
    for (const auto& method : kMethods) {
        if (method.action == action)
            return QLatin1String(method.name);
    }
    return {};
}

/// What a call asks for; empty for one that is none of ours.
std::vector<InstanceRequest> requests(const QDBusMessage& call)
{
    const auto arguments = call.arguments();
    const auto text = [&](int index) { return arguments.value(index).toString().toStdString(); };
    if (call.interface() != QLatin1String(kApplication)) {
        const auto action = actionNamed(call.member());
        return action ? std::vector{InstanceRequest{*action, text(0)}} : std::vector<InstanceRequest>();
    }
    if (call.member() == QLatin1String("Activate"))
        return {{Action::present, {}}};
    if (call.member() == QLatin1String("ActivateAction")) {
        const auto action = actionNamed(arguments.value(0).toString());
        return action ? std::vector{InstanceRequest{*action, {}}} : std::vector<InstanceRequest>();
    }
    std::vector<InstanceRequest> links;
    if (call.member() == QLatin1String("Open")) {
        for (const auto& link : arguments.value(0).toStringList())
            links.push_back({Action::open, link.toStdString()});
    }
    return links;
}

InstanceError errorOf(const QDBusError& error)
{
    switch (error.type()) {
    case QDBusError::ServiceUnknown: return {Kind::notRunning, {}};
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut: return {Kind::noReply, {}};
    default: break;
    }
    if (error.name() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner")) // where nobody is to be started
        return {Kind::notRunning, {}};
    if (error.name() == kRefused)
        return {Kind::refused, error.message().toStdString()};
    return {Kind::failed, error.message().toStdString()};
}

} // namespace

class DBusInstance::Service final : public QDBusVirtualObject {
public:
    explicit Service(Handler handler) : m_handler(std::move(handler)) {}
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    ~Service() override
    {
        auto bus = QDBusConnection::sessionBus();
        bus.unregisterService(kName);
        bus.unregisterObject(kPath);
    }

    QString introspect(const QString&) const override { return QString(QLatin1String(kIntrospection)).arg(kName); }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override
    {
        const auto asked = requests(call);
        if (asked.empty())
            return false;
        Result<void, std::string> result;
        for (const auto& request : asked) {
            if (result)
                result = m_handler(request);
        }
        if (call.isReplyRequired())
            bus.send(result ? call.createReply()
                            : call.createErrorReply(kRefused, QString::fromStdString(result.error())));
        return true;
    }

private:
    const Handler m_handler;
};

DBusInstance::DBusInstance() = default;
DBusInstance::~DBusInstance() = default;

Task<Result<void, InstanceError>> DBusInstance::claim(Handler handler)
{
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        co_return failure(InstanceError{Kind::noBus});
    // The object first: who finds the name finds it.
    auto service = std::make_unique<Service>(std::move(handler));
    if (!bus.registerVirtualObject(kPath, service.get()))
        co_return failure(InstanceError{Kind::failed, "its object could not be registered"});
    if (!bus.registerService(kName))
        co_return failure(InstanceError{Kind::taken});
    m_service = std::move(service);
    co_return Result<void, InstanceError>();
}

Task<Result<void, InstanceError>> DBusInstance::ask(InstanceRequest request)
{
    const auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        co_return failure(InstanceError{Kind::noBus});
    auto call = QDBusMessage::createMethodCall(kName, kPath, kName, methodOf(request.action));
    call.setAutoStartService(false);
    const bool hasArgument =
        request.action == Action::start || request.action == Action::toggle || request.action == Action::open;
    if (hasArgument)
        call.setArguments({QString::fromStdString(request.argument)});
    OneShot<std::optional<InstanceError>> answered;
    QDBusPendingCallWatcher watcher(bus.asyncCall(call, kPatienceMilliseconds));
    const auto finished = [resolve = answered.resolver()](QDBusPendingCallWatcher* reply) {
        resolve(reply->isError() ? std::optional(errorOf(reply->error())) : std::nullopt);
    };
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, finished);
    const auto answer = co_await answered;
    if (!answer)
        co_return failure(InstanceError{Kind::cancelled});
    if (*answer)
        co_return failure(**answer);
    co_return Result<void, InstanceError>();
}

} // namespace vocalith
