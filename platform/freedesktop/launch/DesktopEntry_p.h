#pragma once

#include "base/Result.h"
#include "platform/freedesktop/launch/DetachedPrograms_p.h"

#include <memory>
#include <optional>
#include <string>

struct _GDesktopAppInfo;

namespace vocalith {

/// The description of an application (Desktop Entry Specification 1.5). Main thread.
class DesktopEntry {
public:
    /// By its identifier, with or without ".desktop", from the folders of the XDG Base Directory Specification. Nothing
    /// when there is none, it is hidden, or its program is not installed.
    static std::optional<DesktopEntry> find(const std::string& id);
    /// The identifier that was most likely meant; empty when nothing is near.
    static std::string nearest(const std::string& words);

    /// Without ".desktop".
    const std::string& id() const { return m_id; }
    bool isDBusActivatable() const;

    /// Starts its program, in a terminal where the entry wants one, in a session of its own. The error is a sentence.
    Result<pid_t, std::string> start(const Complaints& complaints) const;

private:
    struct Release {
        void operator()(_GDesktopAppInfo* info) const;
    };
    DesktopEntry(std::string id, _GDesktopAppInfo* info) : m_id(std::move(id)), m_info(info) {}

    std::string m_id;
    std::unique_ptr<_GDesktopAppInfo, Release> m_info;
};

/// Whether an application says that it opens addresses of that scheme, or a virtual file system has it.
bool isSchemeHandled(const std::string& scheme);

} // namespace vocalith
