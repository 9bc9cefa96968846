#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <QVariant>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

class QDBusConnection;
class QThread;

namespace vocalith::test {

/// A session bus of the test's own, which listens from the start. Needs the main thread's event loop.
class SessionBus {
public:
    SessionBus();

    const std::string& address() const { return m_address; }

private:
    TemporaryFolder m_folder;
    std::string m_address;
    ChildProcess m_daemon;
};

/// A connection to the bus at that address that belongs to nobody else.
QDBusConnection connectTo(const std::string& address);

/// A stand-in for one service of a session bus. It answers on a thread of its own, so that also code that waits for an
/// answer gets it.
class BusService {
public:
    struct Call {
        QString member;
        QVariantList arguments;
        QString sender;
    };
    /// Called on the service's thread; yields the arguments of the reply, or nothing for an error.
    using Answer = std::function<std::optional<QVariantList>(const Call&)>;
    struct Description {
        QString name;
        QString path;
        QString interface;
        QString introspection; ///< what stands within the node
    };

    BusService(const std::string& address, Description description, Answer answer);
    ~BusService();

    std::vector<Call> calls(const QString& member) const;
    void emitSignal(const QString& name, const QVariantList& arguments) const;
    /// Of another object and interface of the same service.
    void emitSignalOf(const QString& path, const QString& interface, const QString& name,
                      const QVariantList& arguments) const;

private:
    class Node;
    const Description m_description;
    const Answer m_answer;
    std::unique_ptr<QDBusConnection> m_connection;
    std::unique_ptr<QThread> m_thread;
    std::unique_ptr<Node> m_node;
    mutable std::mutex m_mutex;
    std::vector<Call> m_calls;
};

} // namespace vocalith::test
