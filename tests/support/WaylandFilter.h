#pragma once

#include "base/FileDescriptor.h"
#include "tests/support/TemporaryFolder.h"

#include <string>
#include <thread>
#include <vector>

namespace vocalith::test {

/// Stands before a Wayland compositor and hides some of what it offers, so that a program finds the compositor of
/// another desktop. On a thread of its own.
class WaylandFilter {
public:
    /// `display` is the compositor's socket, `hidden` the names of interfaces.
    WaylandFilter(const std::string& display, std::vector<std::string> hidden);
    ~WaylandFilter();

    std::string display() const { return (m_folder / "wayland").string(); } ///< for WAYLAND_DISPLAY

private:
    TemporaryFolder m_folder;
    FileDescriptor m_listening;
    FileDescriptor m_end; ///< readable once it is to end
    std::thread m_thread;
};

} // namespace vocalith::test
