#include "core/pipeline/commands/QuickCommandsManager.h"

#include "base/Json.h"
#include "core/pipeline/steps/QuickCommandStep.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeAnalytics.h"
#include "tests/support/FakeAppLauncher.h"
#include "tests/support/FakeAutomations.h"
#include "tests/support/FakeClock.h"
#include "tests/support/Faults.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedNotices.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

using namespace vocalith;
using namespace vocalith::test;
using testing::ElementsAre;
using testing::HasSubstr;
namespace action = quick_command_action;

namespace {

using Texts = std::vector<std::string>;

class QuickCommands : public testing::Test {
protected:
    QuickCommandDefinition command(const std::string& phrase, QuickCommandAction does = action::OpenURL{"https://a.b"})
    {
        return {Uuid::random(), {phrase}, std::move(does)};
    }
    QuickCommandsManager& manager()
    {
        if (!m_manager)
            m_manager.emplace(QuickCommandsManager::Services{storage, analytics, launcher, automations, notices, clock},
                              m_log);
        return *m_manager;
    }
    std::optional<HandledCommand> say(const std::string& transcript) { return await(manager().handle(transcript)); }
    bool logged(const std::string& line) const { return std::ranges::find(m_lines, line) != m_lines.end(); }
    std::vector<std::filesystem::path> setAside() const
    {
        std::vector<std::filesystem::path> found;
        for (const auto& file : std::filesystem::directory_iterator(folder.path())) {
            if (file.path().filename().string().starts_with("quickCommands.unreadable-"))
                found.push_back(file.path());
        }
        return found;
    }

    TemporaryFolder folder;
    FakeClock clock;
    PersistentAppStorage storage{folder / "settings.json", clock, Logger()};
    FakeAnalytics analytics;
    FakeAppLauncher launcher;
    FakeAutomations automations{{"Lights"}};
    RecordedNotices notices;

private:
    Texts m_lines;
    const LogService m_log = LogService::toListener([this](LogLevel, std::string_view category, std::string_view line) {
        m_lines.push_back(std::string(category) + ": " + std::string(line));
    });
    std::optional<QuickCommandsManager> m_manager;
};

TEST_F(QuickCommands, DoWhatTheyAreForAndSayIt)
{
    manager().add(command("open mail", action::OpenURL{"https://mail.example.org/?a=1"}));
    manager().add(command("start editor", action::LaunchApp{"org.example.Editor"}));
    manager().add(command("lights out", action::RunShortcut{"Lights"}));
    EXPECT_EQ(say("Open mail.")->report, "Ran the quick command \"open mail\": opened https://mail.example.org/?a=1");
    EXPECT_EQ(say("start editor")->report, "Ran the quick command \"start editor\": started org.example.Editor");
    EXPECT_EQ(say("Lights out!")->report, "Ran the quick command \"lights out\": ran the shortcut \"Lights\"");
    EXPECT_FALSE(say("What I dictate is something else."));
    EXPECT_THAT(launcher.asked(), ElementsAre("open https://mail.example.org/?a=1", "launch org.example.Editor"));
    EXPECT_THAT(automations.asked(), ElementsAre("Lights"));
    EXPECT_EQ(analytics.names(), Texts(3, "quick_command_executed"));
    EXPECT_TRUE(logged("CommandExecutor: Running shortcut: Lights"));
    EXPECT_TRUE(logged("CommandExecutor: Executing command: " + dumpJson(toJson(manager().commands.get()[0]))));
    EXPECT_TRUE(notices.shown.empty());
}

TEST_F(QuickCommands, AShortcutThatIsMissingIsOpenedAsAnAddress)
{
    manager().add(command("evening", action::RunShortcut{"Good night & \"bye\" ü"}));
    EXPECT_EQ(say("evening")->report, "Ran the quick command \"evening\": ran the shortcut \"Good night & \"bye\" ü\"");
    EXPECT_THAT(launcher.asked(),
                ElementsAre("open shortcuts://run-shortcut?name=Good%20night%20%26%20%22bye%22%20%C3%BC"));
}

TEST_F(QuickCommands, ThatFailAreLoggedCountedAndReported)
{
    launcher.failFromNowOn({AppLaunchError::Kind::notFound, "Nothing opens it."});
    const struct {
        QuickCommandAction does;
        std::string log;
        std::string notice;
    } kCases[] = {
        {action::OpenURL{"x:y"}, "Failed to open URL: x:y", "x:y could not be opened: Nothing opens it."},
        {action::LaunchApp{"a.b"}, "Failed to launch app a.b: Nothing opens it.",
         "The application a.b could not be started: Nothing opens it."},
        {action::RunShortcut{"Nope"}, "Failed to run shortcut 'Nope' using URL scheme",
         "There is no automation \"Nope\"."},
        {action::OpenURL{""}, "Missing command parameter", "Missing command parameter"},
        {action::LaunchApp{" "}, "Missing command parameter", "Missing command parameter"},
        {action::RunShortcut{""}, "Missing command parameter", "Missing command parameter"},
    };
    manager().add(command("do the thing"));
    for (const auto& [does, log, notice] : kCases) {
        auto changed = manager().commands.get().front();
        changed.action = does;
        ASSERT_TRUE(manager().update(changed));
        const auto handled = say("do the thing");
        ASSERT_TRUE(handled) << "what was said to the program is not typed";
        EXPECT_THAT(handled->report, HasSubstr("The quick command \"do the thing\" failed. " + notice));
        EXPECT_FALSE(handled->isDone);
        EXPECT_TRUE(logged("CommandExecutor: " + log)) << log;
    }
    EXPECT_EQ(analytics.names(), Texts(6, "quick_command_execution_failed"));
}

TEST_F(QuickCommands, AStoppedWaitIsNoFailure)
{
    launcher.failFromNowOn({AppLaunchError::Kind::cancelled});
    manager().add(command("open mail"));
    EXPECT_TRUE(say("open mail"));
    EXPECT_TRUE(notices.shown.empty());
    EXPECT_TRUE(analytics.names().empty());
}

TEST_F(QuickCommands, AreKeptAndFollowWhatAnotherProcessStores)
{
    EXPECT_FALSE(say("anything"));
    EXPECT_TRUE(logged("quickCommands: No saved quick commands found, returning empty array"));
    const auto first = command("open mail");
    auto second = command("open news");
    manager().add(first);
    manager().add(second);
    EXPECT_TRUE(logged("quickCommands: Saved 2 quick commands"));
    second.isEnabled = false;
    EXPECT_TRUE(manager().update(second));
    EXPECT_FALSE(manager().update(command("unknown")));
    EXPECT_FALSE(manager().remove(Uuid::random()));
    EXPECT_EQ(PersistentAppStorage(folder / "settings.json", clock, Logger()).quickCommands.get(),
              (std::vector{first, second}));

    PersistentAppStorage other(folder / "settings.json", clock, Logger());
    other.quickCommands.set({second});
    runUntil([&] { return manager().commands.get().size() == 1; });
    EXPECT_FALSE(say("open mail")) << "it is gone, and \"open news\" is disabled";
    const auto third = command("open maps");
    second.isEnabled = true;
    manager().merge({third, second});
    EXPECT_EQ(manager().commands.get(), (std::vector{second, third}));
    EXPECT_TRUE(manager().remove(second.id));
    EXPECT_EQ(storage.quickCommands.get(), std::vector{third});
}

TEST_F(QuickCommands, AListThatCannotBeReadIsSetAsideWhole)
{
    const std::string stored = R"([{"id":"3F2504E0-4F89-11D3-9A0C-0305E82C3301","triggerPhrases":["open mail"],)"
                               R"("action":{"openURL":{"_0":"https://a.b"}},"isEnabled":true},{"newer":1}])";
    writeFile(folder / "settings.json", R"({"settingsVersion":1,"playSound":false,"quickCommands":)" + stored + "}");
    PersistentAppStorage damaged(folder / "settings.json", clock, Logger());
    const LogService log = LogService::toListener([](auto...) {});
    QuickCommandsManager commands({damaged, analytics, launcher, automations, notices, clock}, log);
    EXPECT_TRUE(commands.commands.get().empty());
    EXPECT_TRUE(setAside().empty()) << "nobody has asked for it yet";

    EXPECT_FALSE(await(commands.handle("open mail")));
    ASSERT_EQ(setAside().size(), 1u);
    EXPECT_EQ(parseJson(readFile(setAside()[0])), parseJson(stored));
    EXPECT_EQ(setAside()[0].filename(), "quickCommands.unreadable-2026-03-01T12-00-00Z.json");
    EXPECT_THAT(notices.shown, ElementsAre(HasSubstr(setAside()[0].string())));
    EXPECT_EQ(readFile(folder / "settings.json").find("quickCommands"), std::string::npos);
    EXPECT_FALSE(damaged.playSound.get());

    commands.add(command("open maps"));
    EXPECT_EQ(commands.commands.get().size(), 1u);
    EXPECT_FALSE(damaged.isUnreadable(damaged.quickCommands));
    await(commands.handle("open mail"));
    EXPECT_EQ(notices.shown.size(), 1u);
}

TEST_F(QuickCommands, AListThatCannotBeSetAsideStaysAndWhatCanBeReadOfItHolds)
{
    const std::string text = R"({"settingsVersion":1,"quickCommands":[{"id":"3F2504E0-4F89-11D3-9A0C-0305E82C3301",)"
                             R"("triggerPhrases":["open mail"],"action":{"openURL":{"_0":"https://a.b"}},)"
                             R"("isEnabled":true},17]})";
    writeFile(folder / "settings.json", text);
    namespace fs = std::filesystem;
    fs::permissions(folder / "settings.json", fs::perms(0644));
    fs::permissions(folder.path(), fs::perms(0555));
    {
        const OrdinaryUser user;
        PersistentAppStorage damaged(folder / "settings.json", clock, Logger());
        const LogService log = LogService::toListener([](auto...) {});
        QuickCommandsManager commands({damaged, analytics, launcher, automations, notices, clock}, log);
        EXPECT_TRUE(await(commands.handle("open mail")));
        EXPECT_TRUE(await(commands.handle("open mail")));
    }
    fs::permissions(folder.path(), fs::perms(0700));
    EXPECT_EQ(readFile(folder / "settings.json"), text);
    EXPECT_THAT(notices.shown, ElementsAre(HasSubstr("Permission denied"))) << "it is told once";
}

TEST_F(QuickCommands, EndTheRunOnlyWhenTheyAreOnAndOneWasSaid)
{
    manager().add(command("open mail"));
    QuickCommandStep step(storage, manager());
    TranscriptProcessingContext context;
    context.transcript = "Open mail.";
    EXPECT_FALSE(*await(step.run(context)));
    EXPECT_TRUE(launcher.asked().empty()) << "they are off until the user turns them on";

    storage.enableQuickCommands.set(true);
    EXPECT_TRUE(*await(step.run(context)));
    EXPECT_EQ(context.endReason, "Ran the quick command \"open mail\": opened https://a.b");
    context.transcript = "Something to be typed";
    EXPECT_FALSE(*await(step.run(context)));
    EXPECT_EQ(context.transcript, "Something to be typed");
}

} // namespace
