#pragma once

#include "base/Log.h"
#include "platform/pulse/PulseHandles_p.h"
#include "platform/pulse/PulseLoop_p.h"
#include "platform/pulse/PulseTimes.h"
#include "ports/AudioInput.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// A connection to the audio server. It connects for its first client, and says when it was without clients for a
/// while. Once it has failed it stays failed. Lives on the loop's thread.
class PulseConnection : public std::enable_shared_from_this<PulseConnection> {
public:
    class Client {
    public:
        virtual ~Client() = default;
        virtual void connected() = 0;
        /// The server could not be reached, or is gone. It does not come back on this connection.
        virtual void disconnected(const AudioInputError& error) = 0;
        /// Sources came or went, or another became the default.
        virtual void devicesChanged() {}
    };

    /// Told of a connection that is needed no more; it may drop it.
    using Unused = std::function<void(const PulseConnection&)>;

    PulseConnection(PulseLoop& loop, std::string address, PulseTimes times, Unused unused);
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;
    ~PulseConnection() = default;

    /// Tells the client where the connection stands, from within the call where that is known already.
    void add(Client& client);
    /// The client is told nothing more.
    void remove(Client& client);

    /// The server gives no answer here. Whoever comes next gets a connection of their own.
    void distrust() { m_unused(*this); }

    bool hasFailed() const { return m_error.has_value(); }
    bool isReady() const { return m_ready; }
    /// What the server says here about the defaults can be relied on.
    bool isFresh() const;
    pa_context& context() const { return *m_context; }
    /// What the library's last call says went wrong.
    AudioInputError lastError() const;
    void startTimer(PulseTimer& timer, std::chrono::milliseconds delay, std::function<void()> action) const;

private:
    void connect();
    void stateChanged();
    void fail(AudioInputError error);
    void linger();
    void tell(const std::function<void(Client&)>& message);

    PulseLoop& m_loop;
    const std::string m_address;
    const PulseTimes m_times;
    const Unused m_unused;
    PulseHandle<pa_context> m_context;
    PulseHandle<pa_operation> m_subscribing;
    PulseTimer m_limit; ///< of connecting, then of lingering
    bool m_ready = false;
    pa_usec_t m_readySince = 0;
    std::optional<AudioInputError> m_error;
    std::vector<Client*> m_clients;
};

/// The way to one audio server: the thread, and the connection while somebody uses it.
class PulseServer {
public:
    /// An empty address means the session's own server.
    PulseServer(std::string address, PulseTimes times, Logger logger);
    PulseServer(const PulseServer&) = delete;
    PulseServer& operator=(const PulseServer&) = delete;
    ~PulseServer();

    PulseLoop& loop() { return m_loop; }
    const PulseTimes& times() const { return m_times; }
    const Logger& logger() const { return m_logger; }
    /// The running connection, or a new one. The loop's thread.
    std::shared_ptr<PulseConnection> connection();
    /// A connection to ask for the defaults. PipeWire 0.3.65 now and then does not tell a connected client of a new
    /// default, never, and goes on to answer with the old one; it tells the truth to whoever has just come. Those who
    /// ask while it is being made share it: a busy server lets a handful of new connections wait and refuses the
    /// others.
    std::shared_ptr<PulseConnection> freshConnection();

private:
    std::shared_ptr<PulseConnection> connect(std::shared_ptr<PulseConnection>& kept, PulseTimes times);

    const std::string m_address;
    const PulseTimes m_times;
    const Logger m_logger;
    PulseLoop m_loop;
    std::shared_ptr<PulseConnection> m_connection; ///< the loop's thread's
    std::shared_ptr<PulseConnection> m_inquiring;  ///< the loop's thread's
};

} // namespace vocalith
