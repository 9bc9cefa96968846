#include "platform/freedesktop/ClipboardProgram.h"
#include "tests/support/AudioServer.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <QProcess>

#include <csignal>
#include <map>

using namespace vocalith;
using namespace vocalith::test;
namespace fs = std::filesystem;

namespace {

using Kind = ClipboardError::Kind;
using Outcome = Result<void, ClipboardError>;

/// A desktop that the test furnishes: its displays, and the programs in its one folder of programs.
class ClipboardProgramTest : public testing::Test {
protected:
    ClipboardProgramTest()
    {
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "PATH"})
            m_before[name] = qgetenv(name);
        setDisplay("DISPLAY", {});
        setDisplay("WAYLAND_DISPLAY", {});
        fs::create_directory(folder / "bin");
        qputenv("PATH", QByteArray::fromStdString((folder / "bin").string()));
    }
    void TearDown() override
    {
        for (const auto& [name, value] : m_before)
            qputenv(name.c_str(), value);
    }

    static void setDisplay(const char* name, const std::string& value)
    {
        value.empty() ? qunsetenv(name) : qputenv(name, QByteArray::fromStdString(value));
    }
    void install(const std::string& name) { fs::create_symlink("/usr/bin/" + name, folder / "bin" / name); }
    /// A program of the test's own; it finds the others at their usual place and the test's folder in $F.
    void install(const std::string& name, const std::string& script)
    {
        const auto file = folder / "bin" / name;
        writeFile(file, "#!/bin/sh\nPATH=/usr/bin:/bin\nF=" + folder.path().string() + "\n" + script);
        fs::permissions(file, fs::perms::owner_all);
    }
    void startXServer()
    {
        const auto programs = qgetenv("PATH");
        qputenv("PATH", "/usr/bin:/bin");
        m_xServer = ChildProcess({"/usr/bin/Xvfb", "-displayfd", "1", "-nolisten", "tcp"}, {"PATH=/usr/bin:/bin"},
                                 folder / "display");
        qputenv("PATH", programs);
        runUntil([this] { return readFile(folder / "display").ends_with('\n'); });
        const auto number = readFile(folder / "display");
        setDisplay("DISPLAY", ":" + number.substr(0, number.size() - 1));
    }
    /// What another program gets when it pastes.
    static std::string pasted()
    {
        QProcess process;
        process.start("/usr/bin/xclip", {"-selection", "clipboard", "-out"});
        process.waitForFinished();
        return process.readAllStandardOutput().toStdString();
    }
    bool isRunning(const fs::path& pidFile) const { return ::kill(std::stoi(readFile(pidFile)), 0) == 0; }
    Outcome copy(const std::string& text) { return await(clipboard.write(text)); }

    TemporaryFolder folder;
    FakeClock clock;
    ClipboardProgram clipboard{clock};

private:
    std::map<std::string, QByteArray> m_before;
    ChildProcess m_xServer;
};

TEST_F(ClipboardProgramTest, OnX11TheTextIsThereForOthers)
{
    startXServer();
    std::string longText;
    while (longText.size() < 1'000'000)
        longText += "Ein längerer Satz über 数学, mit \"Zeichen\" und\tTabulator.\n";
    for (const std::string program : {"xclip", "xsel"}) {
        install(program);
        for (const auto& text : {"--version $HOME\n" + program + " grüßt", longText}) {
            const auto copied = copy(text);
            ASSERT_TRUE(copied) << copied.error().detail;
            EXPECT_TRUE(runUntil([&] { return pasted() == text; })) << program << " has " << pasted().substr(0, 100);
        }
        fs::remove(folder / "bin" / program);
    }
}

TEST_F(ClipboardProgramTest, OnWaylandWlCopyGetsTheTextOnItsStandardInputAlone)
{
    setDisplay("WAYLAND_DISPLAY", "wayland-7");
    // As its manual says: it reads to the end, and serves the text from the background.
    install("wl-copy", "cat > $F/copied; printf '%s ' \"$@\" > $F/arguments; sleep 600 & echo $! > $F/background\n");
    const std::string text(300'000, 'a');
    const auto copied = copy(text);
    ASSERT_TRUE(copied) << copied.error().detail;
    EXPECT_EQ(readFile(folder / "copied"), text);
    EXPECT_EQ(readFile(folder / "arguments"), "--type text/plain;charset=utf-8 ");
    EXPECT_TRUE(isRunning(folder / "background"));
    ::kill(std::stoi(readFile(folder / "background")), SIGKILL);
}

TEST_F(ClipboardProgramTest, AProgramThatHangsIsEnded)
{
    setDisplay("WAYLAND_DISPLAY", "wayland-7");
    install("wl-copy", "echo $$ > $F/process.new; mv $F/process.new $F/process; exec sleep 600\n");
    const std::string text(300'000, 'a'); // more than a pipe takes
    for (const bool isStopped : {false, true}) {
        fs::remove(folder / "process");
        std::optional<Outcome> outcome;
        TaskScope scope;
        scope.start(storeResult(clipboard.write(text), outcome));
        runUntil([&] { return fs::exists(folder / "process"); });
        if (isStopped)
            scope.requestStop();
        else
            clock.advance(std::chrono::seconds(5));
        runUntil([&] { return scope.isEmpty(); });
        ASSERT_FALSE(outcome.value());
        EXPECT_EQ(outcome->error().kind, isStopped ? Kind::cancelled : Kind::failed);
        EXPECT_FALSE(isRunning(folder / "process"));
    }
}

TEST_F(ClipboardProgramTest, TheNextProgramStandsInForOneThatFails)
{
    setDisplay("WAYLAND_DISPLAY", "wayland-7");
    setDisplay("DISPLAY", ":7");
    install("wl-copy", "cat > /dev/null; echo 'no such protocol' >&2; exit 1\n");
    const auto failed = copy("text");
    ASSERT_FALSE(failed);
    EXPECT_EQ(userMessage(failed.error()),
              "The text could not be copied to the clipboard: wl-copy says: no such protocol");
    install("xclip", "cat > $F/copied\n");
    EXPECT_TRUE(copy("text"));
    EXPECT_EQ(readFile(folder / "copied"), "text");
}

TEST_F(ClipboardProgramTest, SaysWhatIsMissing)
{
    struct Case {
        const char* wayland;
        const char* x11;
        ClipboardError error;
    };
    const std::vector<Case> cases = {
        {"", "", {Kind::noDesktop, ""}},
        {"", ":7", {Kind::noProgram, "xclip"}},
        {"wayland-7", "", {Kind::noProgram, "wl-clipboard"}},
        {"wayland-7", ":7", {Kind::noProgram, "wl-clipboard"}},
    };
    for (const auto& testCase : cases) {
        setDisplay("WAYLAND_DISPLAY", testCase.wayland);
        setDisplay("DISPLAY", testCase.x11);
        const auto copied = copy("text");
        ASSERT_FALSE(copied);
        EXPECT_EQ(copied.error(), testCase.error) << testCase.wayland << testCase.x11;
    }
}

} // namespace
