#include "platform/freedesktop/launch/DesktopAppLauncher.h"

#include "platform/freedesktop/launch/DesktopEntry_p.h"
#include "tests/platform/freedesktop/launch/LaunchFixture.h"
#include "tests/support/FakeAppLauncher.h"

#include <QtDBus/QDBusConnection>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using testing::HasSubstr;
using Kind = AppLaunchError::Kind;

namespace {

class DesktopAppLauncherTest : public LaunchFixture {
protected:
    Result<void, AppLaunchError> open(const std::string& url) { return await(launcher.openURL(url)); }
    Result<void, AppLaunchError> launch(const std::string& id) { return await(launcher.launchApp(id)); }

    DesktopAppLauncher launcher{clock, connectTo(bus().address())};
};

TEST_F(DesktopAppLauncherTest, OpensAddressesInASessionOfTheirOwn)
{
    install(program("xdg-open"),
            "printf '%s|' \"$@\" > $F/a; echo >> $F/a; mv $F/a $F/arguments\n" + notesItself("self"));
    for (const std::string url :
         {"https://a.b/?q=$HOME&c='d e'#ü", "/home/ann/My Töne.txt", "HTTP://A.B", "file:///x"}) {
        EXPECT_TRUE(open(url)) << url;
        EXPECT_EQ(written("arguments"), url + "|\n");
    }
    expectDetached("self");
}

TEST_F(DesktopAppLauncherTest, SaysWhyAnAddressWasNotOpened)
{
    const struct {
        const char* script;
        std::string url;
        Kind kind;
        const char* part;
    } kCases[] = {
        {"exit 2", "/nowhere", Kind::failed, "There is no such file."},
        {"exit 3", "https://a.b", Kind::notFound, "no program that opens it"},
        {"echo one >&2; echo '  it broke' >&2; exit 4", "https://a.b", Kind::failed, "xdg-open says: one it broke"},
        {"exit 1", "https://a.b", Kind::failed, "exit code 1 and does not say why"},
        {"kill -9 $$", "https://a.b", Kind::failed, "exit code 137"},
        {"exit 0", "unheard:of", Kind::notFound, "addresses that begin with \"unheard:\""},
        {"exit 0", "--version", Kind::failed, "no address"},
        {"exit 0", "", Kind::failed, "no address"},
        {"exit 0", std::string("https://a\0b", 11), Kind::failed, "no address"},
    };
    for (const auto& [script, url, kind, part] : kCases) {
        install(program("xdg-open"), script);
        const auto opened = open(url);
        ASSERT_FALSE(opened) << url;
        EXPECT_EQ(opened.error().kind, kind) << url;
        EXPECT_THAT(userMessage(opened.error()), HasSubstr(part));
    }
    const auto path = qgetenv("PATH");
    qputenv("PATH", QByteArray::fromStdString((folder() / "home").string()));
    EXPECT_THAT(userMessage(open("https://a.b").error()), HasSubstr("Install the package xdg-utils"));
    qputenv("PATH", path);
}

TEST_F(DesktopAppLauncherTest, ABrowserInTheForegroundRunsOnWhateverItComplainsOf)
{
    install(program("xdg-open"),
            "set -e; echo $$ > $F/p; mv $F/p $F/pid; while [ ! -e $F/go ]; do sleep 0.02; done\n"
            "for i in 1 2 3; do echo complaint >&2; done\necho still there > $F/after; exec sleep 600\n");
    for (const bool isStopped : {false, true}) {
        std::optional<Result<void, AppLaunchError>> outcome;
        TaskScope scope;
        scope.start(storeResult(launcher.openURL("https://a.b"), outcome));
        written("pid");
        isStopped ? scope.requestStop() : clock.advance(3s);
        runUntil([&] { return scope.isEmpty(); });
        EXPECT_EQ(outcome->has_value(), !isStopped);
        writeFile(folder() / "notes/go", "");
        EXPECT_EQ(written("after"), "still there\n");
        EXPECT_TRUE(isRunning("pid"));
        endProcess("pid");
        std::filesystem::remove_all(folder() / "notes");
        std::filesystem::create_directory(folder() / "notes");
    }
}

TEST_F(DesktopAppLauncherTest, WhatTheDesktopHasForAnAddressIsFoundByTheRealProgram)
{
    install(program("handler"), "echo \"$1\" > $F/h; mv $F/h $F/handled\n");
    addEntry("handler.desktop", "Exec=handler %u\nMimeType=x-scheme-handler/vocalith-test;\n");
    writeFile(folder() / "config/mimeapps.list",
              "[Default Applications]\nx-scheme-handler/vocalith-test=handler.desktop\n");
    runUntil([] { return isSchemeHandled("vocalith-test"); });
    const auto opened = open("vocalith-test://x?name=Good%20night");
    EXPECT_TRUE(opened) << userMessage(opened.error());
    EXPECT_EQ(written("handled"), "vocalith-test://x?name=Good%20night\n");
}

TEST_F(DesktopAppLauncherTest, StartsApplicationsByTheirEntries)
{
    install(program("editor"),
            "printf '%s|' \"$@\" > $F/a; echo >> $F/a; mv $F/a $F/arguments\n" + notesItself("self"));
    addEntry("org.example.Editor.desktop", "Exec=editor --name=%c \"two words\" %U 100%%\n");
    addEntry("vendor/tool.desktop", "Exec=editor tool\n");
    for (const auto& [id, arguments] : std::vector<std::pair<std::string, std::string>>{
             {"org.example.Editor", "--name=Some Application|two words|100%|\n"},
             {"org.example.Editor.desktop", "--name=Some Application|two words|100%|\n"},
             {"vendor-tool", "tool|\n"}}) {
        std::filesystem::remove(folder() / "notes/arguments");
        waitForEntry(id);
        const auto launched = launch(id);
        ASSERT_TRUE(launched) << userMessage(launched.error());
        EXPECT_EQ(written("arguments"), arguments);
    }
    expectDetached("self");
}

TEST_F(DesktopAppLauncherTest, SaysWhyAnApplicationWasNotStarted)
{
    install(program("crash"), "echo 'no display' >&2; exit 7\n");
    addEntry("org.example.Crash.desktop", "Exec=crash\n");
    addEntry("org.example.Gone.desktop", "Exec=not-installed\n");
    addEntry("org.example.Hidden.desktop", "Exec=crash\nHidden=true\n");
    waitForEntry("org.example.Crash");
    EXPECT_THAT(userMessage(launch("org.example.Crash").error()), HasSubstr("org.example.Crash says: no display"));
    for (const std::string id : {"org.example.Gone", "org.example.Hidden", "", "../x", "/bin/sh"})
        EXPECT_EQ(launch(id).error().kind, Kind::notFound) << id;
    EXPECT_THAT(userMessage(launch("crash").error()), HasSubstr("Did you mean \"org.example.Crash\"?"));
    EXPECT_EQ(launch(std::string("a\0b", 3)).error().kind, Kind::notFound);
}

TEST_F(DesktopAppLauncherTest, AsksAnApplicationOfTheBusToComeForward)
{
    addEntry("org.example.Lamp-Shop.desktop", "Exec=sh -c 'echo wrong > $F/wrong'\nDBusActivatable=true\n");
    waitForEntry("org.example.Lamp-Shop");
    const auto missing = launch("org.example.Lamp-Shop");
    ASSERT_FALSE(missing);
    EXPECT_THAT(userMessage(missing.error()), HasSubstr("org.example.Lamp-Shop"));
    const BusService service(bus().address(),
                             {"org.example.Lamp-Shop", "/org/example/Lamp_Shop", "org.freedesktop.Application", ""},
                             [](const auto&) { return QVariantList(); });
    EXPECT_TRUE(launch("org.example.Lamp-Shop"));
    EXPECT_EQ(service.calls("Activate").size(), 1);
    EXPECT_FALSE(std::filesystem::exists(folder() / "notes/wrong"));
}

/// What whoever uses the port relies on, for the fake and the real thing.
TEST_F(DesktopAppLauncherTest, KeepsThePromisesOfThePortAsTheFakeDoes)
{
    FakeAppLauncher fake;
    install(program("xdg-open"), "exit 0\n");
    for (AppLauncher* port : {static_cast<AppLauncher*>(&fake), static_cast<AppLauncher*>(&launcher)})
        EXPECT_TRUE(await(port->openURL("https://a.b")));
    fake.failFromNowOn({Kind::notFound, "There is none."});
    for (AppLauncher* port : {static_cast<AppLauncher*>(&fake), static_cast<AppLauncher*>(&launcher)}) {
        const auto launched = await(port->launchApp("org.example.Nothing"));
        ASSERT_FALSE(launched);
        EXPECT_EQ(launched.error().kind, Kind::notFound);
        EXPECT_FALSE(userMessage(launched.error()).empty());
    }
}

} // namespace
