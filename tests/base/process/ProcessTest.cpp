#include "base/process/Process.h"

#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <unistd.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using Kind = ProcessError::Kind;

namespace {

/// Whether there is such a process that has not ended; an orphan stays a zombie until its new parent looks after it.
bool isAlive(const std::string& id)
{
    std::ifstream file("/proc/" + id + "/stat");
    std::string stat((std::istreambuf_iterator<char>(file)), {});
    return !stat.empty() && stat[stat.rfind(')') + 2] != 'Z';
}

class ProcessRun : public testing::Test {
protected:
    ProcessRun() { std::signal(SIGPIPE, SIG_IGN); } // as the program does

    static ProcessRequest shell(const std::string& script, std::string input = {})
    {
        return {"sh", {"-c", script}, std::move(input)};
    }
    Result<ProcessResult, ProcessError> run(ProcessRequest request)
    {
        const auto began = clock.instant();
        auto result = await(runProcess(clock, std::move(request)));
        took = clock.instant() - began;
        return result;
    }
    std::string outputOf(const std::string& script) { return run(shell(script))->output; }

    /// The ids that a script has written there, once there are so many.
    std::vector<std::string> ids(std::size_t count)
    {
        std::vector<std::string> found;
        runUntil([&] {
            found.clear();
            std::ifstream lines(folder / "ids");
            for (std::string line; std::getline(lines, line);)
                found.push_back(line);
            return found.size() == count;
        });
        return found;
    }
    std::string noteID() const { return " echo $$ >> '" + (folder / "ids").string() + "'; "; }

    SystemClock clock;
    TemporaryFolder folder;
    Duration took{};
};

TEST_F(ProcessRun, GivesTheInputAndYieldsWhatCameOfIt)
{
    using namespace std::string_literals;
    const struct {
        std::string script;
        std::string input;
        ProcessResult result;
    } kCases[] = {
        {"cat; echo oh >&2; exit 3", "one\0two\xff"s, {"one\0two\xff"s, "oh\n", 3}},
        {"wc -c", "", {"0\n", "", 0}},
        {"exec <&-; echo deaf", std::string(1 << 20, 'x'), {"deaf\n", "", 0}},
        {"kill -TERM $$", "", {"", "", 128 + SIGTERM}},
        {"exec >&- 2>&-; sleep 0.05; exit 4", "", {"", "", 4}}, // ends after its pipes
    };
    for (const auto& [script, input, result] : kCases)
        EXPECT_EQ(run(shell(script, input)), result) << script;
}

TEST_F(ProcessRun, NeverDeadlocksHoweverMuchIsWrittenOrLeftUnread)
{
    std::string input(std::size_t{50} << 20, 'x');
    EXPECT_EQ(run(shell("echo enough", input))->output, "enough\n");
    const auto echoed = run(shell("tee /dev/stderr", input)); // both ways at once, three pipes full
    EXPECT_TRUE(echoed->output == input && echoed->error == input);
    EXPECT_EQ(outputOf("head -c 100000000 /dev/zero").size(), 100'000'000u);
}

TEST_F(ProcessRun, WhatPrintsWithoutEndIsEndedAndSaysSo)
{
    for (const auto* script : {"exec yes", "yes >&2; echo never"})
        EXPECT_EQ(run(shell(script)).error(), ProcessError{Kind::tooMuchOutput}) << script;
}

TEST_F(ProcessRun, DoesNotWaitForWhatGoesOnInTheBackground)
{
    const auto output = outputOf("sleep 60 & echo $!");
    EXPECT_LT(took, 30s);
    EXPECT_TRUE(isAlive(std::to_string(std::stoi(output)))) << "it goes on";
    ::kill(std::stoi(output), SIGKILL);

    EXPECT_LE(outputOf("yes &").size(), std::size_t{128} << 20) << "one that never stops writing is left alone";

    EXPECT_EQ(outputOf("(sleep 0.5; echo late) &"), "late\n") << "silence may mean something, so it must be certain";

    FakeClock still; // in which the tenth of a second for the last words does not pass
    EXPECT_EQ(await(runProcess(still, shell("(sleep 0.1; echo late) & echo now")))->output, "now\nlate\n");
}

TEST_F(ProcessRun, TheTimeoutEndsTheWholeGroupAlsoWhatWillNotListen)
{
    FakeClock still; // in which the time that is given to those who do not listen does not pass
    auto polite = shell(noteID() + "sleep 60; echo never");
    polite.timeout = 15s;
    std::optional<Result<ProcessResult, ProcessError>> result;
    TaskScope scope;
    scope.start(storeResult(runProcess(still, std::move(polite)), result));
    ids(1);
    still.advance(15s);
    EXPECT_TRUE(runUntil([&] { return scope.isEmpty(); }));
    EXPECT_EQ(*result, (ProcessResult{"", "", 128 + SIGTERM, true}));

    std::filesystem::remove(folder / "ids");
    auto stubborn = shell("trap '' TERM; (" + noteID() + " sleep 60) & (trap '' TERM; sleep 60) & echo $! >> '" +
                          (folder / "ids").string() + "'; echo begun; while :; do sleep 1; done");
    stubborn.timeout = 1s;
    EXPECT_EQ(run(std::move(stubborn)), (ProcessResult{"begun\n", "", 128 + SIGKILL, true}));
    for (const auto& id : ids(2))
        EXPECT_TRUE(runUntil([&] { return !isAlive(id); })) << id;
}

TEST_F(ProcessRun, AStopEndsTheGroupBeforeTheTaskGoesOn)
{
    for (const std::string trap : {"", "trap '' TERM;"}) {
        std::filesystem::remove(folder / "ids");
        std::optional<Result<ProcessResult, ProcessError>> result;
        TaskScope scope;
        scope.start(storeResult(runProcess(clock, shell(trap + noteID() + "sleep 60 & echo $! >> '" +
                                                        (folder / "ids").string() + "'; wait; sleep 60")),
                                result));
        const auto all = ids(2);
        EXPECT_FALSE(result);
        scope.requestStop();
        runUntil([&] { return scope.isEmpty(); }, 5s);
        EXPECT_EQ(*result, failure(ProcessError{Kind::cancelled}));
        EXPECT_FALSE(isAlive(all[0]));
        EXPECT_TRUE(runUntil([&] { return !isAlive(all[1]); }));
    }
}

TEST_F(ProcessRun, SaysWhyItCannotBeStarted)
{
    writeFile(folder / "plain", "echo no");
    const struct {
        ProcessRequest request;
        std::string detail;
    } kCases[] = {
        {{"vocalith-no-such-program"}, "vocalith-no-such-program: No such file or directory"},
        {{folder / "plain"}, (folder / "plain").string() + ": Permission denied"},
        {{"sh", {"-c", std::string("echo a\0b", 8)}}, "sh: An argument contains a NUL character"},
        {{"sh", {"-c", std::string(200'000, '#')}}, "sh: Argument list too long"},
    };
    for (const auto& [request, detail] : kCases) {
        const auto result = run(request);
        ASSERT_FALSE(result) << detail;
        EXPECT_EQ(result.error(), (ProcessError{Kind::launch, detail}));
    }
    std::filesystem::permissions(folder / "plain", std::filesystem::perms::owner_all);
    EXPECT_EQ(run({folder / "plain"})->output, "no\n") << "a script that names no shell is for the plain one";
}

TEST_F(ProcessRun, TheChildFindsTheWorldAsAShellWouldGiveIt)
{
    ::setenv("VOCALITH_TEST_WORD", "words", 1);
    EXPECT_EQ(outputOf("echo $VOCALITH_TEST_WORD"), "words\n");
    const auto files = outputOf("ls /proc/self/fd");
    std::optional<Result<ProcessResult, ProcessError>> other;
    TaskScope scope;
    scope.start(storeResult(runProcess(clock, shell("sleep 60")), other));
    EXPECT_EQ(outputOf("ls /proc/self/fd"), files) << "nobody holds the pipes of another child open";
    scope.requestStop();
    runUntil([&] { return scope.isEmpty(); });
    EXPECT_EQ(outputOf("(: < /dev/tty) 2>/dev/null || echo none"), "none\n") << "it would be stopped at a terminal";
    EXPECT_EQ(outputOf("yes | head -n 1"), "y\n");
    EXPECT_NE(outputOf("kill -PIPE $$; echo ignored"), "ignored\n");
}

TEST_F(ProcessRun, WorksWhereTheStandardStreamsAreClosed)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(
        {
            for (const int stream : {0, 1, 2})
                ::close(stream);
            const auto result = await(runProcess(clock, shell("cat; echo two >&2", "one")));
            std::_Exit(result == ProcessResult{"one", "two\n", 0} ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

} // namespace
