#include "platform/wayland/WaylandConnection.h"

#include "base/Date.h"
#include "base/OneShot.h"
#include "platform/wayland/WaylandHandle_p.h"

#include <QSocketNotifier>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fmt/format.h>
#include <poll.h>
#include <wayland-client.h>

namespace vocalith {
namespace {

constexpr auto kPatience = std::chrono::seconds(1);

/// Waits for the answer that the compositor gives when it has come so far.
struct PendingSync {
    PendingSync(wl_display* display, OneShot<bool>::Resolver resolver);
    WaylandHandle<wl_callback, wl_callback_destroy> callback;
    OneShot<bool>::Resolver resolve;
    bool isDone = false;
};

void handleDone(void* data, wl_callback*, std::uint32_t)
{
    auto& sync = *static_cast<PendingSync*>(data);
    sync.isDone = true;
    sync.resolve(true);
}

constexpr wl_callback_listener kSyncListener{.done = handleDone};

PendingSync::PendingSync(wl_display* display, OneShot<bool>::Resolver resolver)
    : callback(wl_display_sync(display)), resolve(std::move(resolver))
{
    wl_callback_add_listener(callback.get(), &kSyncListener, this);
}

} // namespace

struct WaylandConnection::State {
    Logger logger;
    WaylandHandle<wl_display, wl_display_disconnect> display;
    WaylandHandle<wl_registry, wl_registry_destroy> registry;
    WaylandHandle<wl_seat, wl_seat_destroy> seat;
    std::vector<WaylandGlobal> globals;
    std::vector<std::unique_ptr<PendingSync>> syncs;
    std::unique_ptr<QSocketNotifier> readable;
    std::unique_ptr<QSocketNotifier> writable;
    bool isLost = false;

    static void handleGlobal(void* data, wl_registry*, std::uint32_t name, const char* interface, std::uint32_t version)
    {
        auto& connection = *static_cast<WaylandConnection*>(data);
        const auto global = connection.m_state->globals.emplace_back(WaylandGlobal{name, interface, version});
        connection.added.emit(global);
    }

    static void handleGone(void* data, wl_registry*, std::uint32_t name)
    {
        auto& connection = *static_cast<WaylandConnection*>(data);
        auto& globals = connection.m_state->globals;
        const auto found = std::ranges::find(globals, name, &WaylandGlobal::name);
        if (found == globals.end())
            return;
        const auto global = *found;
        globals.erase(found);
        connection.removed.emit(global);
    }

    static constexpr wl_registry_listener registryListener{.global = handleGlobal, .global_remove = handleGone};
};

WaylandConnection::WaylandConnection(std::unique_ptr<State> state) : m_state(std::move(state))
{}
WaylandConnection::~WaylandConnection() = default;

Result<std::unique_ptr<WaylandConnection>, std::string> WaylandConnection::open(const std::string& name, Logger logger)
{
    auto state = std::make_unique<State>();
    state->logger = std::move(logger);
    state->display.reset(wl_display_connect(name.empty() ? nullptr : name.c_str()));
    if (!state->display)
        return failure(fmt::format("No Wayland compositor can be reached: {}.", std::strerror(errno)));
    std::unique_ptr<WaylandConnection> connection(new WaylandConnection(std::move(state)));
    if (!connection->waitForOffers())
        return failure(std::string("The Wayland compositor does not answer."));
    connection->attach();
    return connection;
}

bool WaylandConnection::waitForOffers()
{
    wl_display* const display = m_state->display.get();
    m_state->registry.reset(wl_display_get_registry(display));
    wl_registry_add_listener(m_state->registry.get(), &State::registryListener, this);
    const OneShot<bool> unused;
    const PendingSync sync(display, unused.resolver());
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!sync.isDone) {
        while (wl_display_prepare_read(display) != 0) {
            if (wl_display_dispatch_pending(display) < 0) // it leaves the queue as it is
                return false;
        }
        wl_display_flush(display);
        const auto rest =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
        pollfd readable{wl_display_get_fd(display), POLLIN, 0};
        if (rest <= 0 || poll(&readable, 1, static_cast<int>(rest)) <= 0) {
            wl_display_cancel_read(display);
            return false;
        }
        if (wl_display_read_events(display) < 0 || wl_display_dispatch_pending(display) < 0)
            return false;
    }
    m_state->seat.reset(bind<wl_seat>(wl_seat_interface, 1));
    return true;
}

void WaylandConnection::attach()
{
    const int socket = wl_display_get_fd(m_state->display.get());
    m_state->readable = std::make_unique<QSocketNotifier>(socket, QSocketNotifier::Read);
    m_state->writable = std::make_unique<QSocketNotifier>(socket, QSocketNotifier::Write);
    m_state->writable->setEnabled(false);
    QObject::connect(m_state->readable.get(), &QSocketNotifier::activated, m_state->readable.get(),
                     [this] { handleReadable(); });
    QObject::connect(m_state->writable.get(), &QSocketNotifier::activated, m_state->writable.get(),
                     [this] { flush(); });
    flush();
}

void WaylandConnection::handleReadable()
{
    wl_display* const display = m_state->display.get();
    while (wl_display_prepare_read(display) != 0) {
        if (wl_display_dispatch_pending(display) < 0) // it leaves the queue as it is
            return setLost();
    }
    if (wl_display_read_events(display) < 0 || wl_display_dispatch_pending(display) < 0)
        return setLost();
    std::erase_if(m_state->syncs, [](const auto& sync) { return sync->isDone; });
    flush();
}

void WaylandConnection::setLost()
{
    if (std::exchange(m_state->isLost, true))
        return;
    m_state->readable->setEnabled(false);
    m_state->writable->setEnabled(false);
    m_state->logger.error(fmt::format("The connection to the compositor was lost: {}",
                                      std::strerror(wl_display_get_error(m_state->display.get()))));
    for (const auto& sync : m_state->syncs)
        sync->resolve(false);
    lost.emit();
}

bool WaylandConnection::isLost() const
{
    return m_state->isLost;
}

const std::vector<WaylandGlobal>& WaylandConnection::offered() const
{
    return m_state->globals;
}

bool WaylandConnection::offers(std::string_view interface) const
{
    return std::ranges::find(m_state->globals, interface, &WaylandGlobal::interface) != m_state->globals.end();
}

wl_seat* WaylandConnection::seat() const
{
    return m_state->seat.get();
}

void* WaylandConnection::bindFirst(const wl_interface& interface, std::uint32_t newestVersion)
{
    const auto found = std::ranges::find(m_state->globals, std::string_view(interface.name), &WaylandGlobal::interface);
    return found == m_state->globals.end() ? nullptr : bindGlobal(*found, interface, newestVersion);
}

void* WaylandConnection::bindGlobal(const WaylandGlobal& global, const wl_interface& interface,
                                    std::uint32_t newestVersion)
{
    return wl_registry_bind(m_state->registry.get(), global.name, &interface, std::min(global.version, newestVersion));
}

void WaylandConnection::flush()
{
    if (m_state->isLost)
        return;
    const bool isFull = wl_display_flush(m_state->display.get()) < 0 && errno == EAGAIN;
    // That the compositor has left is noticed by the read, which also says why.
    m_state->writable->setEnabled(isFull);
}

Task<bool> WaylandConnection::synchronized()
{
    if (m_state->isLost)
        co_return false;
    OneShot<bool> reached;
    m_state->syncs.push_back(std::make_unique<PendingSync>(m_state->display.get(), reached.resolver()));
    flush();
    const auto outcome = co_await reached;
    co_return outcome.value_or(false);
}

} // namespace vocalith
