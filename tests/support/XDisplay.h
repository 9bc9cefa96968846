#pragma once

#include "tests/support/SessionBus.h"

#include <memory>
#include <string>
#include <vector>

namespace vocalith::test {

/// An X display of the test's own, with a window manager, a private home, run-time folder and session bus, and the
/// applications that the test starts on it. Everything ends with it. Needs the main thread's event loop.
class XDisplay {
public:
    struct Options {
        bool hasWindowManager = true;
        bool hasAccessibility = false; ///< an accessibility bus that applications join
    };

    XDisplay();
    explicit XDisplay(Options options);
    ~XDisplay();

    const std::string& name() const { return m_name; } ///< for $DISPLAY, such as ":5"
    const std::string& busAddress() const { return m_bus.address(); }
    std::filesystem::path home() const { return m_folder / "home"; }
    const TemporaryFolder& folder() const { return m_folder; }
    const std::vector<std::string>& environment() const { return m_environment; }

    /// Runs a command to its end on this display and yields what it prints. Its failure fails the test.
    std::string run(std::vector<std::string> command) const;
    ChildProcess start(std::vector<std::string> command) const;
    /// Presses and releases keys as a user does: "ctrl+s" in the words of xdotool.
    void press(const std::string& keys) const { run({"xdotool", "key", keys}); }
    /// Sets the layouts of the keyboard, such as "us,ru". Their variants may be left out.
    void setLayout(const std::string& layouts, const std::string& variants = {}) const;

    /// The window class of what has the keyboard focus; empty when nothing has it.
    std::string focusedClass() const;
    void waitForFocus(const std::string& windowClass) const;

    /// Ends the X server, as a crash does.
    void kill() { m_server.kill(); }

private:
    struct Client;
    void startServer();
    void startWindowManager();
    void startAccessibility();

    TemporaryFolder m_folder;
    std::string m_name;
    SessionBus m_bus;
    std::vector<std::string> m_environment;
    ChildProcess m_server;
    std::vector<ChildProcess> m_background; ///< the window manager
    ChildProcess m_accessibility;
    std::unique_ptr<Client> m_client;
    mutable int m_started = 0;
};

} // namespace vocalith::test
