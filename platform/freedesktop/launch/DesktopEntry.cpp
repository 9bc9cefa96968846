#include "platform/freedesktop/launch/DesktopEntry_p.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace vocalith {
namespace {

constexpr std::string_view kSuffix = ".desktop";

std::string withoutSuffix(std::string id)
{
    if (id.ends_with(kSuffix))
        id.resize(id.size() - kSuffix.size());
    return id;
}

/// In the child, before the program begins: only what signal-safety(7) allows.
void leaveSession(void* /*unused*/)
{
    ::setsid();
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

void noteProcess(GDesktopAppInfo* /*info*/, GPid id, void* noted)
{
    *static_cast<pid_t*>(noted) = id;
}

} // namespace

void DesktopEntry::Release::operator()(_GDesktopAppInfo* info) const
{
    g_object_unref(info);
}

std::optional<DesktopEntry> DesktopEntry::find(const std::string& id)
{
    const auto plain = withoutSuffix(id);
    if (plain.empty() || plain.find('/') != std::string::npos || plain.find('\0') != std::string::npos)
        return std::nullopt;
    auto* info = g_desktop_app_info_new((plain + std::string(kSuffix)).c_str());
    return info ? std::optional(DesktopEntry(plain, info)) : std::nullopt;
}

std::string DesktopEntry::nearest(const std::string& words)
{
    std::string found;
    char*** const groups = g_desktop_app_info_search(words.c_str());
    for (char*** group = groups; *group; ++group) {
        if (found.empty() && **group)
            found = withoutSuffix(**group);
        g_strfreev(*group);
    }
    g_free(groups); // NOLINT(bugprone-multi-level-implicit-pointer-conversion)
    return found;
}

bool DesktopEntry::isDBusActivatable() const
{
    return g_desktop_app_info_get_boolean(m_info.get(), "DBusActivatable");
}

Result<pid_t, std::string> DesktopEntry::start(const Complaints& complaints) const
{
    const FileDescriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    const int errors = complaints.descriptor() >= 0 ? complaints.descriptor() : nothing.get();
    pid_t id = 0;
    GError* error = nullptr;
    const auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD);
    if (g_desktop_app_info_launch_uris_as_manager_with_fds(m_info.get(), nullptr, nullptr, flags, leaveSession, nullptr,
                                                           noteProcess, &id, nothing.get(), nothing.get(), errors,
                                                           &error))
        return id;
    std::string why = error ? error->message : "Nothing says why.";
    g_clear_error(&error);
    return failure(std::move(why));
}

bool isSchemeHandled(const std::string& scheme)
{
    if (auto* handler = g_app_info_get_default_for_uri_scheme(scheme.c_str())) {
        g_object_unref(handler);
        return true;
    }
    const char* const* known = g_vfs_get_supported_uri_schemes(g_vfs_get_default());
    return known && g_strv_contains(known, scheme.c_str());
}

} // namespace vocalith
