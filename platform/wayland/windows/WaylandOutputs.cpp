#include "platform/wayland/windows/WaylandOutputs_p.h"

#include "platform/wayland/WaylandHandle_p.h"

#include <algorithm>
#include <wayland-client.h>

namespace vocalith {

struct WaylandOutputs::Output {
    WaylandOutputs& all;
    std::uint32_t name;
    WaylandHandle<wl_output, wl_output_destroy> handle;
    int told = 1;
    int scale = 1;
};

struct WaylandOutputs::Events {
    static void geometry(void*, wl_output*, int, int, int, int, int, const char*, const char*, int) {}
    static void mode(void*, wl_output*, std::uint32_t, int, int, int) {}
    static void scale(void* data, wl_output*, int factor) { static_cast<Output*>(data)->told = std::max(factor, 1); }
    static void done(void* data, wl_output*)
    {
        auto& output = *static_cast<Output*>(data);
        if (std::exchange(output.scale, output.told) != output.told)
            output.all.changed.emit();
    }
};

WaylandOutputs::WaylandOutputs(WaylandConnection& connection) : m_connection(connection)
{
    m_onAdded = connection.added.subscribe([this](const auto& global) { add(global); });
    m_onRemoved = connection.removed.subscribe([this](const auto& global) {
        std::erase_if(m_outputs, [&](const auto& output) { return output.name == global.name; });
    });
    for (const auto& global : connection.offered())
        add(global);
    connection.flush();
}

WaylandOutputs::~WaylandOutputs() = default;

void WaylandOutputs::add(const WaylandGlobal& global)
{
    static constexpr wl_output_listener listener{.geometry = Events::geometry,
                                                 .mode = Events::mode,
                                                 .done = Events::done,
                                                 .scale = Events::scale,
                                                 .name = nullptr,
                                                 .description = nullptr};
    if (global.interface != wl_output_interface.name || global.version < 2)
        return; // older ones know no scale
    auto& output = m_outputs.emplace_back(Output{*this, global.name, nullptr});
    output.handle.reset(m_connection.bind<wl_output>(global, wl_output_interface, 2));
    wl_output_add_listener(output.handle.get(), &listener, &output);
    m_connection.flush();
}

int WaylandOutputs::scaleOf(const wl_output* output) const
{
    const auto found =
        std::ranges::find(m_outputs, output, [](const auto& one) -> const wl_output* { return one.handle.get(); });
    return found == m_outputs.end() ? finestScale() : found->scale;
}

int WaylandOutputs::finestScale() const
{
    const auto finest = std::ranges::max_element(m_outputs, {}, &Output::scale);
    return finest == m_outputs.end() ? 1 : finest->scale;
}

} // namespace vocalith
