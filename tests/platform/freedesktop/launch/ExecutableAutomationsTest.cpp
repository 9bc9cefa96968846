#include "platform/freedesktop/launch/ExecutableAutomations.h"

#include "tests/platform/freedesktop/launch/LaunchFixture.h"
#include "tests/support/FakeAutomations.h"

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using Kind = AutomationError::Kind;
namespace fs = std::filesystem;

namespace {

class ExecutableAutomationsTest : public LaunchFixture {
protected:
    void SetUp() override { fs::create_directories(shortcuts()); }
    void TearDown() override
    {
        fs::remove_all(shortcuts());
        LaunchFixture::TearDown();
    }

    static fs::path shortcuts() { return folder() / "home/my shortcuts"; }
    Result<void, AutomationError> run(const std::string& name) { return await(automations.run(name)); }

    ExecutableAutomations automations{shortcuts(), clock};
};

TEST_F(ExecutableAutomationsTest, AreTheExecutablesOfTheFolderWithOrWithoutExtension)
{
    install(shortcuts() / "lights", "echo plain > $F/ran\n");
    install(shortcuts() / "lights.sh", "echo with extension > $F/ran\n");
    install(shortcuts() / "Good night.py", notesItself("self"));
    install(shortcuts() / ".hidden", "exit 0\n");
    writeFile(shortcuts() / "notes.txt", "no program");
    writeFile(shortcuts() / "Good night.bak", "older");
    fs::create_directory(shortcuts() / "folder");
    EXPECT_THAT(automations.names(), ElementsAre("Good night.py", "lights", "lights.sh"));
    EXPECT_TRUE(run("lights"));
    EXPECT_EQ(written("ran"), "plain\n");
    EXPECT_TRUE(run("lights.sh"));
    EXPECT_EQ(written("ran"), "with extension\n");
    EXPECT_TRUE(run("Good night"));
    expectDetached("self");
    EXPECT_THAT(written("self"), HasSubstr((folder() / "home").string() + "\n")) << "it works in the user's folder";
}

TEST_F(ExecutableAutomationsTest, SayWhatIsWrongAndWhatToDo)
{
    install(shortcuts() / "broken", "echo 'lamp not found' >&2; exit 3\n");
    install(shortcuts() / "silent", "exit 1\n");
    writeFile(shortcuts() / "plain.sh", "#!/bin/sh\n");
    writeFile(shortcuts() / "orphan", "#!/no/such/interpreter\n");
    fs::permissions(shortcuts() / "orphan", fs::perms::owner_all);
    install(folder() / "home/outside", "exit 0\n");
    const auto where = shortcuts().string();
    const struct {
        std::string name;
        Kind kind;
        std::string part;
    } kCases[] = {
        {"broken", Kind::failed, "The shortcut \"broken\" ended at once with exit code 3: lamp not found"},
        {"silent", Kind::failed, "exit code 1 and does not say why."},
        {"plain", Kind::failed, "chmod +x \"" + where + "/plain.sh\""},
        {"orphan", Kind::failed, "The program that its first line names is missing. Mend \"" + where + "/orphan\"."},
        {"nothing", Kind::notFound,
         "There are: broken, orphan, silent. Put an executable file of that name into " + where},
        {"../outside", Kind::notFound, "without a folder"},
        {"/bin/true", Kind::notFound, "without a folder"},
        {"..", Kind::notFound, "without a folder"},
        {"", Kind::notFound, "without a folder"},
        {std::string("bro\0ken", 7), Kind::notFound, "without a folder"},
    };
    for (const auto& [name, kind, part] : kCases) {
        const auto ran = run(name);
        ASSERT_FALSE(ran) << name;
        EXPECT_EQ(ran.error().kind, kind) << name;
        EXPECT_THAT(userMessage(ran.error()), HasSubstr(part));
    }
    ExecutableAutomations none(folder() / "missing", clock);
    EXPECT_TRUE(none.names().empty());
    EXPECT_THAT(userMessage(await(none.run("a")).error()), HasSubstr((folder() / "missing").string()));
}

TEST_F(ExecutableAutomationsTest, OneThatTakesLongerRunsOnAndOutlivesUs)
{
    writeFile(shortcuts() / "slow", "echo $$ > $F/p; mv $F/p $F/pid; exec sleep 600\n"); // which the shell reads
    fs::permissions(shortcuts() / "slow", fs::perms::owner_all);
    std::optional<Result<void, AutomationError>> outcome;
    {
        ExecutableAutomations ours(shortcuts(), clock);
        TaskScope scope;
        scope.start(storeResult(ours.run("slow"), outcome));
        written("pid");
        clock.advance(1s);
        runUntil([&] { return scope.isEmpty(); });
    }
    EXPECT_TRUE(outcome->has_value());
    EXPECT_TRUE(isRunning("pid"));
    endProcess("pid");
}

TEST_F(ExecutableAutomationsTest, KeepThePromisesOfThePortAsTheFakeDoes)
{
    install(shortcuts() / "b", "exit 0\n");
    install(shortcuts() / "a", "exit 0\n");
    FakeAutomations fake({"a", "b"});
    for (Automations* port : {static_cast<Automations*>(&fake), static_cast<Automations*>(&automations)}) {
        EXPECT_THAT(port->names(), ElementsAre("a", "b"));
        EXPECT_TRUE(await(port->run("b")));
        const auto missing = await(port->run("c"));
        ASSERT_FALSE(missing);
        EXPECT_EQ(missing.error().kind, Kind::notFound);
        EXPECT_FALSE(userMessage(missing.error()).empty());
    }
}

} // namespace
