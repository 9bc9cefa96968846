#include "tests/support/SwayCompositor.h"

#include "tests/support/LocalSocket.h"
#include "tests/support/MainLoop.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <csignal>
#include <sstream>
#include <unistd.h>

namespace vocalith::test {

namespace fs = std::filesystem;

SwayCompositor::SwayCompositor(int scale)
{
    signal(SIGPIPE, SIG_IGN); // as the program does
    for (const auto* folder : {"home", "run"}) {
        fs::create_directory(m_folder / folder);
        fs::permissions(m_folder / folder, fs::perms::owner_all);
    }
    const auto none = "unix:path=" + (m_folder / "none").string();
    m_environment = {"HOME=" + (m_folder / "home").string(),
                     "XDG_RUNTIME_DIR=" + (m_folder / "run").string(),
                     "DBUS_SESSION_BUS_ADDRESS=" + none,
                     "DBUS_SYSTEM_BUS_ADDRESS=" + none,
                     "PATH=/usr/bin:/bin",
                     "LC_ALL=C.UTF-8",
                     "WLR_BACKENDS=headless",
                     "WLR_LIBINPUT_NO_DEVICES=1",
                     "WLR_RENDERER=pixman",
                     "GDK_BACKEND=wayland",
                     "NO_AT_BRIDGE=1",
                     "GSETTINGS_BACKEND=memory"};
    writeFile(m_folder / "sway.conf",
              fmt::format("xwayland disable\noutput HEADLESS-1 mode 800x600\noutput HEADLESS-1 scale {}\n", scale));
    std::vector<std::string> command{"sway", "-c", (m_folder / "sway.conf").string()};
    if (geteuid() == 0) // which it refuses to be run by
        command.insert(command.begin(), {"unshare", "-U", "--map-user=1000", "--map-group=1000"});
    m_sway = ChildProcess(std::move(command), m_environment, m_folder / "sway.log");
    m_display = (m_folder / "run" / "wayland-1").string();
    m_environment.push_back("WAYLAND_DISPLAY=" + m_display);
    runUntil([this] { return isListening(m_display); });
    // It listens before it answers, and who opens a connection does not wait for long.
    run("until swaymsg -s $XDG_RUNTIME_DIR/sway-ipc.*.sock -t get_version; do sleep 0.05; done");
}

ChildProcess SwayCompositor::start(std::vector<std::string> command) const
{
    const auto log = m_folder / (command[0] + ".log");
    return {std::move(command), m_environment, log};
}

std::string SwayCompositor::run(const std::string& command) const
{
    const auto output = m_folder / "output";
    const auto done = m_folder / "done";
    ChildProcess shell({"sh", "-c", fmt::format("({}) >{}; touch {}", command, output.string(), done.string())},
                       m_environment, m_folder / "shell.log");
    runUntil([&] { return fs::exists(done); });
    fs::remove(done);
    return readFile(output);
}

ChildProcess SwayCompositor::startTerminal() const
{
    const auto file = (m_folder / "typed").string();
    fs::remove(file);
    writeFile(m_folder / "foot.ini", "");
    auto terminal = start({"foot", "-c", (m_folder / "foot.ini").string(), "sh", "-c",
                           fmt::format("stty -icanon -echo -isig -ixon; exec cat >{}", file)});
    runUntil([&] { return fs::exists(file); });
    return terminal;
}

std::string SwayCompositor::typed() const
{
    return readFile(m_folder / "typed");
}

Screenshot SwayCompositor::screenshot() const
{
    std::istringstream image(run("grim -t ppm -"));
    std::string format;
    int most = 0;
    Screenshot shot;
    image >> format >> shot.width >> shot.height >> most;
    image.get();
    EXPECT_EQ(format, "P6");
    shot.pixels.resize(static_cast<std::size_t>(shot.width) * static_cast<std::size_t>(shot.height));
    for (auto& pixel : shot.pixels) {
        for (int part = 0; part < 3; ++part)
            pixel = pixel << 8U | static_cast<std::uint32_t>(image.get());
    }
    return shot;
}

void SwayCompositor::kill()
{
    m_sway.kill();
}

} // namespace vocalith::test
