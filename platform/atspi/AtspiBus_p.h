#pragma once

#include "base/Clock.h"
#include "base/OneShot.h"

#include <QObject>
#include <QVariant>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// An accessible object: on the bus it is known by the application and a path in there.
struct AtspiReference {
    QString service;
    QString path;
    bool operator==(const AtspiReference&) const = default;
};

namespace atspi {
inline constexpr const char* kAccessible = "org.a11y.atspi.Accessible";
inline constexpr const char* kText = "org.a11y.atspi.Text";
inline constexpr const char* kEditableText = "org.a11y.atspi.EditableText";
inline constexpr const char* kApplication = "org.a11y.atspi.Application";
inline constexpr const char* kRootPath = "/org/a11y/atspi/accessible/root";

// From at-spi2-core's atspi-constants.h.
enum class State { active = 1, editable = 7, focused = 12, showing = 25, managesDescendants = 31 };
enum class Role : unsigned { menuBar = 34, passwordText = 40, scrollBar = 48, toolBar = 63 };

bool has(const std::vector<unsigned>& states, State state);
} // namespace atspi

/// What one request wants, and until when.
struct AtspiCall {
    AtspiReference object;
    const char* interface = nullptr;
    const char* method = nullptr;
    QVariantList arguments{};

    static AtspiCall property(AtspiReference object, const char* interface, const char* name);
};

/// A D-Bus connection on which nobody ever waits in the thread. Belongs to the accessibility port; main thread.
/// Requests whose answers nobody has got by the end of it are dropped.
class AtspiBus {
public:
    using Handler = std::function<void(const QDBusMessage&)>;

    AtspiBus(QDBusConnection connection, Clock& clock) : m_connection(std::move(connection)), m_clock(clock) {}
    AtspiBus(const AtspiBus&) = delete;
    AtspiBus& operator=(const AtspiBus&) = delete;
    ~AtspiBus();

    bool isConnected() const { return m_connection.isConnected(); }
    Clock& clock() const { return m_clock; }

    /// Calls `handler` once: with the answer, or with an error message no later than at `deadline`.
    void call(const AtspiCall& call, Instant deadline, Handler handler);

private:
    QDBusConnection m_connection;
    Clock& m_clock;
    QObject m_calls; ///< parent of those that run
};

/// A request that runs from here on: `const auto answer = co_await reply.message;`
class AtspiReply {
public:
    AtspiReply(AtspiBus& bus, const AtspiCall& call, Instant deadline)
    {
        bus.call(call, deadline, [resolve = message.resolver()](const QDBusMessage& answer) { resolve(answer); });
    }

    OneShot<QDBusMessage> message;
};

using AtspiAnswer = Result<QDBusMessage, Cancelled>;

/// What an answer holds; nothing for an error, a stop or another type.
std::optional<QVariant> valueOf(const QDBusMessage& answer, int index = 0);
std::optional<int> numberOf(const AtspiAnswer& answer, int index = 0);
std::optional<std::string> textOf(const AtspiAnswer& answer);
std::vector<AtspiReference> referencesOf(const QDBusMessage& answer);
std::vector<unsigned> statesOf(const QDBusMessage& answer);

} // namespace vocalith
