#include "platform/atspi/AtspiBus_p.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusError>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusPendingCall>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusVariant>

#include <algorithm>
#include <memory>

namespace vocalith {
namespace {

constexpr int kLongPast = 60'000; // ms: the clock has the say, and the library forgets what nobody waits for

} // namespace

bool atspi::has(const std::vector<unsigned>& states, State state)
{
    const auto bit = static_cast<unsigned>(state);
    return bit / 32 < states.size() && (states[bit / 32] >> (bit % 32) & 1U) != 0;
}

AtspiCall AtspiCall::property(AtspiReference object, const char* interface, const char* name)
{
    return {std::move(object), "org.freedesktop.DBus.Properties", "Get", {QString(interface), QString(name)}};
}

AtspiBus::~AtspiBus()
{
    QDBusConnection::disconnectFromBus(m_connection.name());
}

void AtspiBus::call(const AtspiCall& call, Instant deadline, Handler handler)
{
    auto message = QDBusMessage::createMethodCall(call.object.service, call.object.path, call.interface,
                                                  QLatin1String(call.method));
    message.setArguments(call.arguments);
    const auto pending = m_connection.asyncCall(message, kLongPast);
    auto* const watcher = new QDBusPendingCallWatcher(pending, &m_calls);
    const auto limit = std::make_shared<Timer>();
    const auto tell = std::make_shared<const Handler>(std::move(handler));
    *limit = m_clock.after(std::max(deadline - m_clock.instant(), Duration::zero()), [watcher, tell] {
        watcher->disconnect();
        watcher->deleteLater();
        (*tell)(QDBusMessage::createError(QDBusError::NoReply, QStringLiteral("no answer in time")));
    });
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &m_calls,
                     [limit, tell](QDBusPendingCallWatcher* finished) {
                         limit->reset();
                         finished->deleteLater();
                         (*tell)(finished->reply());
                     });
}

std::optional<QVariant> valueOf(const QDBusMessage& answer, int index)
{
    if (answer.type() != QDBusMessage::ReplyMessage || index >= answer.arguments().size())
        return std::nullopt;
    const QVariant value = answer.arguments().at(index);
    if (value.canConvert<QDBusVariant>())
        return value.value<QDBusVariant>().variant();
    return value;
}

std::optional<int> numberOf(const AtspiAnswer& answer, int index)
{
    const auto value = answer ? valueOf(*answer, index) : std::nullopt;
    bool isNumber = false;
    const int number = value ? value->toInt(&isNumber) : 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<std::string> textOf(const AtspiAnswer& answer)
{
    const auto value = answer ? valueOf(*answer) : std::nullopt;
    if (!value || value->typeId() != QMetaType::QString)
        return std::nullopt;
    return value->toString().toStdString();
}

std::vector<AtspiReference> referencesOf(const QDBusMessage& answer)
{
    std::vector<AtspiReference> references;
    const auto value = valueOf(answer);
    if (!value || answer.signature() != QLatin1String("a(so)"))
        return references;
    const auto array = value->value<QDBusArgument>();
    array.beginArray();
    while (!array.atEnd()) {
        AtspiReference reference;
        QDBusObjectPath path;
        array.beginStructure();
        array >> reference.service >> path;
        array.endStructure();
        reference.path = path.path();
        references.push_back(std::move(reference));
    }
    array.endArray();
    return references;
}

std::vector<unsigned> statesOf(const QDBusMessage& answer)
{
    std::vector<unsigned> states;
    const auto value = valueOf(answer);
    if (!value || answer.signature() != QLatin1String("au"))
        return states;
    const auto array = value->value<QDBusArgument>();
    array.beginArray();
    while (!array.atEnd()) {
        unsigned word = 0;
        array >> word;
        states.push_back(word);
    }
    array.endArray();
    return states;
}

} // namespace vocalith
