#pragma once

#include "platform/wayland/WaylandConnection.h"

#include <list>

struct wl_output;

namespace vocalith {

/// The screens and their scales. It belongs to a LayerShellSurface.
class WaylandOutputs {
public:
    explicit WaylandOutputs(WaylandConnection& connection);
    ~WaylandOutputs();
    WaylandOutputs(const WaylandOutputs&) = delete;
    WaylandOutputs& operator=(const WaylandOutputs&) = delete;

    /// Physical pixels for a logical one, a whole number; of any screen, the finest of all.
    int scaleOf(const wl_output* output) const;
    int finestScale() const;

    Signal<> changed;

private:
    struct Output;
    struct Events;
    void add(const WaylandGlobal& global);

    WaylandConnection& m_connection;
    std::list<Output> m_outputs;
    Subscription m_onAdded;
    Subscription m_onRemoved;
};

} // namespace vocalith
