#include "platform/wayland/windows/LayerShellSurface.h"

#include "platform/wayland/WaylandConnection.h"
#include "platform/wayland/WaylandHandle_p.h"
#include "platform/wayland/windows/LayerShell_p.h"
#include "platform/wayland/windows/SharedBuffer_p.h"
#include "platform/wayland/windows/WaylandOutputs_p.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fractional-scale-v1.h>
#include <optional>
#include <viewporter.h>

namespace vocalith {
namespace {

constexpr std::size_t kMostBuffers = 3; // one on the screen, one on its way there, one to paint
constexpr double kFractionalUnit = 120; // of the fractional-scale protocol

void destroyLayers(zwlr_layer_shell_v1* layers)
{
    // Before its third version the protocol had no word for it.
    if (zwlr_layer_shell_v1_get_version(layers) >= ZWLR_LAYER_SHELL_V1_DESTROY_SINCE_VERSION)
        zwlr_layer_shell_v1_destroy(layers);
    else
        wl_proxy_destroy(reinterpret_cast<wl_proxy*>(layers));
}

} // namespace

struct LayerShellSurface::Globals {
    explicit Globals(WaylandConnection& connection)
        : compositor(connection.bind<wl_compositor>(wl_compositor_interface, 4)),
          memory(connection.bind<wl_shm>(wl_shm_interface, 1)),
          layers(connection.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, 3)),
          viewporter(connection.bind<wp_viewporter>(wp_viewporter_interface, 1)),
          scales(connection.bind<wp_fractional_scale_manager_v1>(wp_fractional_scale_manager_v1_interface, 1)),
          outputs(connection)
    {}

    bool isUsable() const { return compositor && memory && layers; }

    WaylandHandle<wl_compositor, wl_compositor_destroy> compositor;
    WaylandHandle<wl_shm, wl_shm_destroy> memory;
    WaylandHandle<zwlr_layer_shell_v1, destroyLayers> layers;
    WaylandHandle<wp_viewporter, wp_viewporter_destroy> viewporter;
    WaylandHandle<wp_fractional_scale_manager_v1, wp_fractional_scale_manager_v1_destroy> scales;
    WaylandOutputs outputs;
};

/// The surface while it is shown.
class LayerShellSurface::Surface {
public:
    Surface(LayerShellSurface& owner, const Geometry& geometry);

    void setGeometry(const Geometry& geometry);
    double scale() const;
    void present(std::span<const std::uint32_t> pixels, int width, int height);

private:
    static void handleConfigure(void* data, zwlr_layer_surface_v1* layer, std::uint32_t serial, std::uint32_t,
                                std::uint32_t);
    static void handleClosed(void* data, zwlr_layer_surface_v1*);
    static void handleFrame(void* data, wl_callback*, std::uint32_t);
    static void handleEnter(void* data, wl_surface*, wl_output* output);
    static void handleLeave(void*, wl_surface*, wl_output*) {}
    static void handleScale(void* data, wp_fractional_scale_v1*, std::uint32_t scale);

    void requestFrame();
    void wantFrame() { m_owner.frameWanted.emit(); }
    SharedBuffer* freeBuffer(int width, int height);
    bool applyScale(int width, int height);

    LayerShellSurface& m_owner;
    Globals& m_globals;
    Geometry m_geometry;
    WaylandHandle<wl_surface, wl_surface_destroy> m_surface;
    WaylandHandle<zwlr_layer_surface_v1, zwlr_layer_surface_v1_destroy> m_layer;
    WaylandHandle<wp_viewport, wp_viewport_destroy> m_viewport;
    WaylandHandle<wp_fractional_scale_v1, wp_fractional_scale_v1_destroy> m_fractional;
    WaylandHandle<wl_callback, wl_callback_destroy> m_frame;
    std::vector<std::unique_ptr<SharedBuffer>> m_buffers;
    std::optional<double> m_fractionalScale;
    const wl_output* m_output = nullptr;
    bool m_isConfigured = false;
};

LayerShellSurface::Surface::Surface(LayerShellSurface& owner, const Geometry& geometry)
    : m_owner(owner), m_globals(*owner.m_globals), m_geometry(geometry),
      m_surface(wl_compositor_create_surface(m_globals.compositor.get())),
      m_layer(zwlr_layer_shell_v1_get_layer_surface(m_globals.layers.get(), m_surface.get(), nullptr,
                                                    ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "vocalith"))
{
    static constexpr wl_surface_listener surfaceListener{.enter = handleEnter, .leave = handleLeave};
    static constexpr zwlr_layer_surface_v1_listener layerListener{.configure = handleConfigure, .closed = handleClosed};
    static constexpr wp_fractional_scale_v1_listener scaleListener{.preferred_scale = handleScale};
    wl_surface_add_listener(m_surface.get(), &surfaceListener, this);
    zwlr_layer_surface_v1_add_listener(m_layer.get(), &layerListener, this);
    if (m_globals.viewporter)
        m_viewport.reset(wp_viewporter_get_viewport(m_globals.viewporter.get(), m_surface.get()));
    if (m_viewport && m_globals.scales) {
        m_fractional.reset(
            wp_fractional_scale_manager_v1_get_fractional_scale(m_globals.scales.get(), m_surface.get()));
        wp_fractional_scale_v1_add_listener(m_fractional.get(), &scaleListener, this);
    }
    const WaylandHandle<wl_region, wl_region_destroy> nowhere(wl_compositor_create_region(m_globals.compositor.get()));
    wl_surface_set_input_region(m_surface.get(), nowhere.get());
    zwlr_layer_surface_v1_set_keyboard_interactivity(m_layer.get(), ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_NONE);
    setGeometry(geometry);
}

void LayerShellSurface::Surface::setGeometry(const Geometry& geometry)
{
    const bool isTop = geometry.edge == Edge::top;
    const bool isResized = geometry.width != m_geometry.width || geometry.height != m_geometry.height;
    m_geometry = geometry;
    zwlr_layer_surface_v1_set_size(m_layer.get(), static_cast<std::uint32_t>(geometry.width),
                                   static_cast<std::uint32_t>(geometry.height));
    zwlr_layer_surface_v1_set_anchor(m_layer.get(),
                                     isTop ? ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP : ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM);
    zwlr_layer_surface_v1_set_margin(m_layer.get(), isTop ? geometry.margin : 0, 0, isTop ? 0 : geometry.margin, 0);
    if (isResized)
        m_isConfigured = false; // until the compositor has agreed
    if (m_isConfigured)
        return requestFrame();
    wl_surface_commit(m_surface.get());
    m_owner.m_connection.flush();
}

void LayerShellSurface::Surface::handleConfigure(void* data, zwlr_layer_surface_v1* layer, std::uint32_t serial,
                                                 std::uint32_t, std::uint32_t)
{
    auto& surface = *static_cast<Surface*>(data);
    zwlr_layer_surface_v1_ack_configure(layer, serial);
    surface.m_isConfigured = true;
    surface.wantFrame();
}

void LayerShellSurface::Surface::handleClosed(void* data, zwlr_layer_surface_v1*)
{
    // Its screen is gone. On which one it is to be now is asked anew.
    const auto& surface = *static_cast<Surface*>(data);
    auto& owner = surface.m_owner;
    const auto geometry = surface.m_geometry;
    const bool wasShown = surface.m_isConfigured;
    owner.m_surface.reset();
    if (wasShown)
        owner.show(geometry);
}

void LayerShellSurface::Surface::handleFrame(void* data, wl_callback*, std::uint32_t)
{
    auto& surface = *static_cast<Surface*>(data);
    surface.m_frame.reset();
    surface.wantFrame();
}

void LayerShellSurface::Surface::handleEnter(void* data, wl_surface*, wl_output* output)
{
    auto& surface = *static_cast<Surface*>(data);
    const double before = surface.scale();
    surface.m_output = output;
    if (surface.scale() != before)
        surface.wantFrame();
}

void LayerShellSurface::Surface::handleScale(void* data, wp_fractional_scale_v1*, std::uint32_t scale)
{
    auto& surface = *static_cast<Surface*>(data);
    const double before = surface.scale();
    surface.m_fractionalScale = scale / kFractionalUnit;
    if (surface.m_isConfigured && surface.scale() != before)
        surface.wantFrame();
}

double LayerShellSurface::Surface::scale() const
{
    return m_fractionalScale.value_or(m_globals.outputs.scaleOf(m_output));
}

SharedBuffer* LayerShellSurface::Surface::freeBuffer(int width, int height)
{
    std::erase_if(m_buffers, [&](const auto& buffer) { return buffer->isFree() && !buffer->hasSize(width, height); });
    const auto found = std::ranges::find_if(m_buffers, &SharedBuffer::isFree);
    if (found != m_buffers.end())
        return found->get();
    if (m_buffers.size() >= kMostBuffers)
        return nullptr;
    auto made = SharedBuffer::create(m_globals.memory.get(), width, height);
    return made ? m_buffers.emplace_back(std::move(made)).get() : nullptr;
}

/// Says how large the picture is on the screen; not so when that cannot be said.
bool LayerShellSurface::Surface::applyScale(int width, int height)
{
    if (m_viewport) {
        wp_viewport_set_destination(m_viewport.get(), m_geometry.width, m_geometry.height);
        return true;
    }
    const int whole = width / std::max(m_geometry.width, 1);
    if (whole < 1 || width != m_geometry.width * whole || height != m_geometry.height * whole)
        return false;
    wl_surface_set_buffer_scale(m_surface.get(), whole);
    return true;
}

void LayerShellSurface::Surface::present(std::span<const std::uint32_t> pixels, int width, int height)
{
    const bool isWhole = width > 0 && height > 0 && pixels.size() == std::size_t(width) * std::size_t(height);
    if (!m_isConfigured || !isWhole)
        return;
    auto* const buffer = freeBuffer(width, height);
    if (!buffer || !applyScale(width, height))
        return requestFrame();
    wl_surface_attach(m_surface.get(), buffer->fill(pixels), 0, 0);
    wl_surface_damage_buffer(m_surface.get(), 0, 0, width, height);
    requestFrame();
}

void LayerShellSurface::Surface::requestFrame()
{
    static constexpr wl_callback_listener listener{.done = handleFrame};
    if (!m_frame) {
        m_frame.reset(wl_surface_frame(m_surface.get()));
        wl_callback_add_listener(m_frame.get(), &listener, this);
    }
    wl_surface_commit(m_surface.get());
    m_owner.m_connection.flush();
}

LayerShellSurface::LayerShellSurface(WaylandConnection& connection, Logger logger)
    : m_connection(connection), m_logger(std::move(logger)), m_globals(std::make_unique<Globals>(connection))
{
    m_onScale = m_globals->outputs.changed.subscribe([this] {
        if (m_surface)
            frameWanted.emit();
    });
}

LayerShellSurface::~LayerShellSurface()
{
    m_surface.reset();
    m_globals.reset();
    m_connection.flush();
}

bool LayerShellSurface::isOffered(const WaylandConnection& connection)
{
    return connection.offers("zwlr_layer_shell_v1");
}

void LayerShellSurface::show(const Geometry& geometry)
{
    if (!m_globals->isUsable() || m_connection.isLost())
        return m_logger.error("No overlay: the compositor has no layers");
    if (geometry.width <= 0 || geometry.height <= 0)
        return m_logger.error(fmt::format("No overlay of {}x{}", geometry.width, geometry.height));
    if (m_surface)
        m_surface->setGeometry(geometry);
    else
        m_surface = std::make_unique<Surface>(*this, geometry);
}

void LayerShellSurface::hide()
{
    m_surface.reset();
    m_connection.flush();
}

double LayerShellSurface::scale() const
{
    return m_surface ? m_surface->scale() : m_globals->outputs.finestScale();
}

void LayerShellSurface::present(std::span<const std::uint32_t> pixels, int width, int height)
{
    if (m_surface && !m_connection.isLost())
        m_surface->present(pixels, width, height);
}

} // namespace vocalith
