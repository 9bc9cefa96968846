#pragma once

#include "base/Log.h"
#include "base/Observable.h"
#include "base/Result.h"
#include "base/Task.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct wl_display;
struct wl_interface;
struct wl_seat;

namespace vocalith {

/// Something that the compositor offers.
struct WaylandGlobal {
    std::uint32_t name = 0; ///< its number
    std::string interface;
    std::uint32_t version = 0;
};

/// A connection to the Wayland compositor whose events come through the main thread's event loop. When the compositor
/// goes away, or ends the connection because of an error, it is lost for good, and calls do nothing any more. Main
/// thread; it outlives all that uses it.
class WaylandConnection {
public:
    /// An empty name means $WAYLAND_DISPLAY. Waits for the compositor's answer, at most a second. The error says what
    /// could not be reached.
    static Result<std::unique_ptr<WaylandConnection>, std::string> open(const std::string& name = {},
                                                                        Logger logger = {});
    ~WaylandConnection();
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;

    bool isLost() const;
    const std::vector<WaylandGlobal>& offered() const;
    bool offers(std::string_view interface) const;

    /// The first seat; null without one.
    wl_seat* seat() const;
    /// An object for the first global of that interface, in the version that both sides know. Null where there is none.
    template <class T>
    T* bind(const wl_interface& interface, std::uint32_t newestVersion)
    {
        return static_cast<T*>(bindFirst(interface, newestVersion));
    }
    template <class T>
    T* bind(const WaylandGlobal& global, const wl_interface& interface, std::uint32_t newestVersion)
    {
        return static_cast<T*>(bindGlobal(global, interface, newestVersion));
    }

    /// Sends what was asked for.
    void flush();
    /// Waits until the compositor has handled all requests so far and its events up to then have been told. Not so when
    /// the connection was lost, or the task was asked to stop.
    Task<bool> synchronized();

    Signal<WaylandGlobal> added;
    Signal<WaylandGlobal> removed;
    Signal<> lost;

private:
    struct State;
    explicit WaylandConnection(std::unique_ptr<State> state);
    void* bindFirst(const wl_interface& interface, std::uint32_t newestVersion);
    void* bindGlobal(const WaylandGlobal& global, const wl_interface& interface, std::uint32_t newestVersion);
    bool waitForOffers();
    void attach();
    void handleReadable();
    void setLost();

    std::unique_ptr<State> m_state;
};

} // namespace vocalith
