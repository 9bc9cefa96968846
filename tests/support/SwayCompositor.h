#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vocalith::test {

/// The colours of a screen, 0xRRGGBB.
struct Screenshot {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

    std::uint32_t at(int x, int y) const
    {
        return pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
    }
};

/// A Wayland compositor of the test's own, without hardware, with a private home and run-time folder and no bus. One
/// screen of 800x600 physical pixels. Needs the main thread's event loop.
class SwayCompositor {
public:
    explicit SwayCompositor(int scale = 1);

    /// For WAYLAND_DISPLAY, here and in programs.
    const std::string& display() const { return m_display; }
    const TemporaryFolder& folder() const { return m_folder; }
    const std::vector<std::string>& environment() const { return m_environment; } ///< for programs on it
    /// Starts a program on it.
    ChildProcess start(std::vector<std::string> command) const;
    /// Runs a shell command on it to its end and yields what it printed; the loop of the main thread goes on.
    std::string run(const std::string& command) const;
    /// A terminal emulator that writes what it is given to a file, and is ready to be given it. The file's path is
    /// yielded by `typed()`.
    ChildProcess startTerminal() const;
    std::string typed() const;
    Screenshot screenshot() const;
    void kill(); ///< without a good-bye

private:
    TemporaryFolder m_folder;
    std::string m_display;
    std::vector<std::string> m_environment;
    ChildProcess m_sway;
};

} // namespace vocalith::test
