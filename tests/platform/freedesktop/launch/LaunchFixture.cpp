#include "tests/platform/freedesktop/launch/LaunchFixture.h"

#include "platform/freedesktop/launch/DesktopEntry_p.h"

#include <QByteArray>

#include <csignal>
#include <sstream>

namespace fs = std::filesystem;

namespace vocalith::test {
namespace {

struct Desktop {
    Desktop()
    {
        for (const char* name : {"bin", "home", "config", "data/applications", "notes"})
            fs::create_directories(folder / name);
        const auto set = [this](const char* name, const fs::path& path) {
            qputenv(name, QByteArray::fromStdString(path.string()));
        };
        set("HOME", folder / "home");
        set("XDG_CONFIG_HOME", folder / "config");
        set("XDG_CONFIG_DIRS", folder / "config");
        set("XDG_DATA_HOME", folder / "data");
        set("XDG_DATA_DIRS", folder / "data");
        qputenv("PATH", QByteArray::fromStdString((folder / "bin").string() + ":/usr/bin:/bin"));
        qputenv("F", QByteArray::fromStdString((folder / "notes").string()));
        qputenv("DISPLAY", ":77"); // nobody looks at it, but xdg-open wants one
        for (const char* name : {"WAYLAND_DISPLAY", "XDG_CURRENT_DESKTOP", "DESKTOP_SESSION", "BROWSER"})
            qunsetenv(name);
        qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(bus.address()));
    }

    TemporaryFolder folder;
    SessionBus bus;
};

std::unique_ptr<Desktop> g_desktop; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

} // namespace

void LaunchFixture::SetUpTestSuite()
{
    if (!g_desktop)
        g_desktop = std::make_unique<Desktop>();
}

void LaunchFixture::TearDown()
{
    for (const char* name : {"bin", "notes"}) {
        fs::remove_all(folder() / name);
        fs::create_directory(folder() / name);
    }
}

const TemporaryFolder& LaunchFixture::folder()
{
    return g_desktop->folder;
}

const SessionBus& LaunchFixture::bus()
{
    return g_desktop->bus;
}

void LaunchFixture::install(const fs::path& file, const std::string& script)
{
    writeFile(file, "#!/bin/sh\n" + script);
    fs::permissions(file, fs::perms::owner_all);
}

void LaunchFixture::addEntry(const std::string& path, const std::string& lines)
{
    const auto file = folder() / "data/applications" / path;
    fs::create_directories(file.parent_path());
    writeFile(file, "[Desktop Entry]\nType=Application\nName=Some Application\n" + lines);
}

void LaunchFixture::waitForEntry(const std::string& id)
{
    runUntil([&] { return DesktopEntry::find(id).has_value(); });
}

std::string LaunchFixture::written(const std::string& name)
{
    const auto file = folder() / "notes" / name;
    runUntil([&] { return fs::exists(file) && readFile(file).ends_with('\n'); });
    return readFile(file);
}

std::string LaunchFixture::notesItself(const std::string& name)
{
    // Through a pipe, because the shell would redirect itself to a file.
    return "{ echo $$; sed 's/.*) //' /proc/$$/stat | cut -d ' ' -f 4,5\n"
           "readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2 /proc/$$/cwd\n"
           "readlink /proc/$$/fd/* | sort | tr '\\n' ' '; echo; } | cat > $F/new\n"
           "mv $F/new $F/" +
           name + "\n";
}

void LaunchFixture::expectDetached(const std::string& name)
{
    std::istringstream lines(written(name));
    std::string id;
    std::string session;
    std::string terminal;
    lines >> id >> session >> terminal;
    EXPECT_EQ(id, session) << "it leads a session of its own";
    EXPECT_EQ(terminal, "0");
    std::string input;
    std::string output;
    lines >> input >> output;
    EXPECT_EQ(input + output, "/dev/null/dev/null");
    std::string rest((std::istreambuf_iterator<char>(lines)), {});
    // Of other files only the script itself, which the shell has open.
    EXPECT_THAT(rest, testing::ContainsRegex("\n/dev/null /dev/null /memfd:complaints \\(deleted\\) /tmp/[^\n]* \n$"));
    EXPECT_THAT(rest, testing::Not(testing::ContainsRegex("pipe:|socket:|anon_inode:")));
}

bool LaunchFixture::isRunning(const std::string& pidFile)
{
    return ::kill(std::stoi(written(pidFile)), 0) == 0;
}

void LaunchFixture::endProcess(const std::string& pidFile)
{
    ::kill(std::stoi(written(pidFile)), SIGKILL);
}

} // namespace vocalith::test
