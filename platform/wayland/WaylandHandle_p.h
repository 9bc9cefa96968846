#pragma once

#include <memory>

namespace vocalith {

template <auto destroy>
struct WaylandDestroy {
    template <class T>
    void operator()(T* object) const
    {
        destroy(object);
    }
};

/// Owns an object of the connection: `WaylandHandle<wl_surface, wl_surface_destroy>`.
template <class T, auto destroy>
using WaylandHandle = std::unique_ptr<T, WaylandDestroy<destroy>>;

} // namespace vocalith
