#include "platform/wayland/windows/WaylandFocusedApp.h"

#include "platform/wayland/WaylandConnection.h"
#include "platform/wayland/WaylandHandle_p.h"

#include <algorithm>
#include <span>
#include <wayland-client.h>
#include <wlr-foreign-toplevel-management-unstable-v1.h>

namespace vocalith {
namespace {

using Handle = zwlr_foreign_toplevel_handle_v1;

struct Window {
    std::string identifier;
    std::string title;
    bool isActive = false;
    bool operator==(const Window&) const = default;
};

} // namespace

struct WaylandFocusedApp::Windows {
    struct Known {
        WaylandHandle<Handle, zwlr_foreign_toplevel_handle_v1_destroy> handle;
        Window told; ///< as far as the compositor has come with a change
        Window now;
    };

    explicit Windows(WaylandConnection& from);
    Windows(const Windows&) = delete;
    Windows& operator=(const Windows&) = delete;
    ~Windows()
    {
        if (manager)
            zwlr_foreign_toplevel_manager_v1_stop(manager.get());
        known.clear();
        manager.reset();
        connection.flush();
    }

    Known* find(Handle* handle)
    {
        const auto found = std::ranges::find(known, handle, [](const auto& one) { return one.handle.get(); });
        return found == known.end() ? nullptr : &*found;
    }

    static void setTitle(void* data, Handle* handle, const char* title)
    {
        if (auto* const window = static_cast<Windows*>(data)->find(handle))
            window->told.title = title;
    }
    static void setIdentifier(void* data, Handle* handle, const char* identifier)
    {
        if (auto* const window = static_cast<Windows*>(data)->find(handle))
            window->told.identifier = identifier;
    }
    static void setState(void* data, Handle* handle, wl_array* states)
    {
        const std::span all(static_cast<const std::uint32_t*>(states->data), states->size / sizeof(std::uint32_t));
        if (auto* const window = static_cast<Windows*>(data)->find(handle))
            window->told.isActive =
                std::ranges::find(all, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) != all.end();
    }
    static void applyAll(void* data, Handle* handle)
    {
        if (auto* const window = static_cast<Windows*>(data)->find(handle))
            window->now = window->told;
    }
    static void removeClosed(void* data, Handle* handle)
    {
        std::erase_if(static_cast<Windows*>(data)->known,
                      [handle](const auto& window) { return window.handle.get() == handle; });
    }
    static void ignoreOutput(void*, Handle*, wl_output*) {}
    static void ignoreParent(void*, Handle*, Handle*) {}

    static void add(void* data, zwlr_foreign_toplevel_manager_v1*, Handle* handle)
    {
        static constexpr zwlr_foreign_toplevel_handle_v1_listener listener{
            .title = setTitle,
            .app_id = setIdentifier,
            .output_enter = ignoreOutput,
            .output_leave = ignoreOutput,
            .state = setState,
            .done = applyAll,
            .closed = removeClosed,
            .parent = ignoreParent,
        };
        auto& added = static_cast<Windows*>(data)->known.emplace_back();
        added.handle.reset(handle);
        zwlr_foreign_toplevel_handle_v1_add_listener(handle, &listener, data);
    }
    static void finish(void*, zwlr_foreign_toplevel_manager_v1*) {}

    WaylandConnection& connection;
    WaylandHandle<zwlr_foreign_toplevel_manager_v1, zwlr_foreign_toplevel_manager_v1_destroy> manager;
    std::vector<Known> known;
};

WaylandFocusedApp::Windows::Windows(WaylandConnection& from)
    : connection(from),
      manager(from.bind<zwlr_foreign_toplevel_manager_v1>(zwlr_foreign_toplevel_manager_v1_interface, 3))
{
    static constexpr zwlr_foreign_toplevel_manager_v1_listener listener{.toplevel = add, .finished = finish};
    if (manager)
        zwlr_foreign_toplevel_manager_v1_add_listener(manager.get(), &listener, this);
    connection.flush();
}

WaylandFocusedApp::WaylandFocusedApp(WaylandConnection& connection) : m_windows(std::make_unique<Windows>(connection))
{}

WaylandFocusedApp::~WaylandFocusedApp() = default;

bool WaylandFocusedApp::isOffered(const WaylandConnection& connection)
{
    return connection.offers("zwlr_foreign_toplevel_manager_v1");
}

Task<std::optional<FocusedApplication>> WaylandFocusedApp::focused()
{
    const auto& known = m_windows->known;
    const auto active = std::ranges::find_if(known, [](const auto& window) { return window.now.isActive; });
    if (m_windows->connection.isLost() || active == known.end())
        co_return std::nullopt;
    const auto& window = active->now;
    FocusedApplication application;
    application.identifier = window.identifier;
    application.name = window.identifier.substr(window.identifier.rfind('.') + 1);
    application.windowTitle = window.title;
    application.isTerminal = isTerminalEmulator(window.identifier);
    co_return std::optional(std::move(application));
}

} // namespace vocalith
