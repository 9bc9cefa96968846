#include "platform/pulse/PulseConnection_p.h"

#include <algorithm>

namespace vocalith {
namespace {

using Kind = AudioInputError::Kind;

Kind kindOf(int error)
{
    switch (error) {
    case PA_ERR_ACCESS:
    case PA_ERR_AUTHKEY: return Kind::permissionDenied;
    case PA_ERR_NOENTITY:
    case PA_ERR_KILLED: return Kind::noDevice;
    case PA_ERR_CONNECTIONTERMINATED: return Kind::serverLost;
    default: return Kind::failed;
    }
}

PulseHandle<pa_proplist> applicationProperties()
{
    PulseHandle<pa_proplist> properties(pa_proplist_new());
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME, "Vocalith");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, "vocalith");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ICON_NAME, "vocalith");
    return properties;
}

} // namespace

PulseConnection::PulseConnection(PulseLoop& loop, std::string address, PulseTimes times, Unused unused)
    : m_loop(loop), m_address(std::move(address)), m_times(times), m_unused(std::move(unused))
{}

void PulseConnection::add(Client& client)
{
    m_clients.push_back(&client);
    if (m_error)
        client.disconnected(*m_error);
    else if (m_ready) {
        m_limit.stop();
        client.connected();
    } else if (!m_context)
        connect();
}

void PulseConnection::remove(Client& client)
{
    std::erase(m_clients, &client);
    linger();
}

void PulseConnection::linger()
{
    const auto self = shared_from_this();
    if (!m_clients.empty())
        return;
    if (m_error)
        m_unused(*this);
    else if (m_ready) // else it is still connecting, and somebody may come until then
        startTimer(m_limit, m_times.linger, [this] { m_unused(*this); });
}

void PulseConnection::connect()
{
    const auto self = shared_from_this();
    const auto properties = applicationProperties();
    m_context.reset(pa_context_new_with_proplist(&m_loop.api(), nullptr, properties.get()));
    startTimer(m_limit, m_times.connect, [this] { fail({Kind::noServer, "the audio server does not answer"}); });
    pa_context_set_state_callback(
        m_context.get(),
        [](pa_context*, void* connection) { static_cast<PulseConnection*>(connection)->stateChanged(); }, this);
    pa_context_set_subscribe_callback(
        m_context.get(),
        [](pa_context*, pa_subscription_event_type_t event, std::uint32_t, void* connection) {
            const auto facility = event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK;
            const auto type = event & PA_SUBSCRIPTION_EVENT_TYPE_MASK;
            // A source changes whenever its volume does; that concerns nobody here.
            if (facility == PA_SUBSCRIPTION_EVENT_SERVER || type != PA_SUBSCRIPTION_EVENT_CHANGE)
                static_cast<PulseConnection*>(connection)->tell([](Client& client) { client.devicesChanged(); });
        },
        this);
    // Where sessions use socket activation, connecting starts the server anyway. Elsewhere the library would fork one
    // and wait for it: a server of the whole session that lives in the environment of a dictation program surprises its
    // user more than a message that says what to start.
    const auto* address = m_address.empty() ? nullptr : m_address.c_str();
    if (pa_context_connect(m_context.get(), address, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        fail({Kind::noServer, lastError().detail});
}

void PulseConnection::stateChanged()
{
    const auto self = shared_from_this();
    switch (pa_context_get_state(m_context.get())) {
    case PA_CONTEXT_READY: {
        m_ready = true;
        m_readySince = pa_rtclock_now();
        m_limit.stop();
        const auto events =
            static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SERVER | PA_SUBSCRIPTION_MASK_SOURCE);
        m_subscribing.reset(pa_context_subscribe(m_context.get(), events, nullptr, nullptr));
        tell([](Client& client) { client.connected(); });
        linger();
        return;
    }
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED: {
        auto error = lastError();
        if (error.kind != Kind::permissionDenied)
            error.kind = m_ready ? Kind::serverLost : Kind::noServer;
        fail(std::move(error));
        return;
    }
    default: return;
    }
}

void PulseConnection::fail(AudioInputError error)
{
    if (m_error)
        return;
    const auto self = shared_from_this();
    m_error = std::move(error);
    m_ready = false;
    m_limit.stop();
    tell([this](Client& client) { client.disconnected(*m_error); });
    linger();
}

void PulseConnection::tell(const std::function<void(Client&)>& message)
{
    const auto self = shared_from_this();
    const auto told = m_clients;
    for (auto* client : told) {
        if (std::ranges::find(m_clients, client) != m_clients.end())
            message(*client);
    }
}

bool PulseConnection::isFresh() const
{
    constexpr pa_usec_t kFreshFor = 50 * PA_USEC_PER_MSEC;
    return !m_ready || pa_rtclock_now() - m_readySince < kFreshFor;
}

AudioInputError PulseConnection::lastError() const
{
    const int error = pa_context_errno(m_context.get());
    return {kindOf(error), pa_strerror(error)};
}

void PulseConnection::startTimer(PulseTimer& timer, std::chrono::milliseconds delay, std::function<void()> action) const
{
    timer.start(*m_context, m_loop.api(), delay, std::move(action));
}

PulseServer::PulseServer(std::string address, PulseTimes times, Logger logger)
    : m_address(std::move(address)), m_times(times), m_logger(std::move(logger))
{}

PulseServer::~PulseServer()
{
    m_loop.stop();
    m_connection.reset();
    m_inquiring.reset();
}

std::shared_ptr<PulseConnection> PulseServer::connect(std::shared_ptr<PulseConnection>& kept, PulseTimes times)
{
    kept = std::make_shared<PulseConnection>(m_loop, m_address, times, [&kept](const PulseConnection& connection) {
        if (kept.get() == &connection)
            kept.reset();
    });
    return kept;
}

std::shared_ptr<PulseConnection> PulseServer::connection()
{
    if (!m_connection || m_connection->hasFailed())
        return connect(m_connection, m_times);
    return m_connection;
}

std::shared_ptr<PulseConnection> PulseServer::freshConnection()
{
    auto shared = connection();
    if (shared->isFresh())
        return shared;
    if (m_inquiring && !m_inquiring->hasFailed() && m_inquiring->isFresh())
        return m_inquiring;
    auto times = m_times;
    times.linger = std::chrono::milliseconds(0); // it will not be fresh for long
    return connect(m_inquiring, times);
}

} // namespace vocalith
