#include "app/cli/commands/CommandsCommand.h"

#include "app/cli/CommandLine.h"
#include "app/cli/ExitCode.h"
#include "app/cli/terminal/Terminal.h"
#include "core/pipeline/commands/QuickCommandsManager.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeAnalytics.h"
#include "tests/support/FakeAppLauncher.h"
#include "tests/support/FakeAutomations.h"
#include "tests/support/FakeClock.h"
#include "tests/support/RecordedNotices.h"
#include "tests/support/TemporaryFolder.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

using namespace vocalith;
using namespace vocalith::test;
using testing::HasSubstr;
using testing::MatchesRegex;
namespace action = quick_command_action;

namespace {

class QuickCommandsOnTheCommandLine : public testing::Test {
protected:
    QuickCommandsOnTheCommandLine() { storage.enableQuickCommands.set(true); }

    /// What the command says, with its exit code where that is not 0.
    std::string type(std::vector<const char*> words)
    {
        words.insert(words.begin(), {"vocalith", "commands"});
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        Terminal terminal;
        const auto options = parseCommandLine(static_cast<int>(words.size()), words.data());
        const int code = options ? CommandsCommand({manager, storage, automations, shortcuts, terminal})
                                       .run(std::get<CommandsOptions>(*options))
                                 : options.error();
        const auto out = testing::internal::GetCapturedStdout();
        return out + testing::internal::GetCapturedStderr() + (code == exitSuccess ? "" : std::to_string(code));
    }
    std::vector<QuickCommandDefinition> stored() const
    {
        return PersistentAppStorage(folder / "settings.json", clock, Logger()).quickCommands.get();
    }

    TemporaryFolder folder;
    FakeClock clock;
    PersistentAppStorage storage{folder / "settings.json", clock, Logger()};
    FakeAnalytics analytics;
    FakeAppLauncher launcher;
    FakeAutomations automations{{"lights.sh"}};
    RecordedNotices notices;
    const LogService log = LogService::toListener([](auto...) {});
    QuickCommandsManager manager{{storage, analytics, launcher, automations, notices, clock}, log};
    const std::filesystem::path shortcuts = "/home/ann/shortcuts";
};

TEST_F(QuickCommandsOnTheCommandLine, AreAddedListedChangedAndRemoved)
{
    EXPECT_THAT(type({}), HasSubstr("There are no quick commands. Add one"));
    EXPECT_EQ(type({"add", "open mail", "Show my mail", "--url", "https://a.b/?q=1"}),
              "\"open mail\", \"Show my mail\": opens https://a.b/?q=1\n");
    EXPECT_EQ(type({"add", "lights out", "--shortcut", "lights"}), "\"lights out\": runs the shortcut \"lights\"\n");
    EXPECT_EQ(type({"edit", "LIGHTS OUT", "--app", "org.example.Lamp"}), "\"lights out\": starts org.example.Lamp\n");
    EXPECT_EQ(type({"edit", "lights out", "lights off", "darkness"}),
              "\"lights off\", \"darkness\": starts org.example.Lamp\n");
    EXPECT_EQ(type({"disable", "darkness"}), "\"lights off\", \"darkness\": starts org.example.Lamp (disabled)\n");
    EXPECT_THAT(type({"list"}),
                MatchesRegex("[0-9A-F]{8}  \"open mail\", \"Show my mail\"  opens https://a.b/\\?q=1\n"
                             "[0-9A-F]{8}  \"lights off\", \"darkness\"     starts org.example.Lamp \\(disabled\\)\n"));
    const auto id = stored()[1].id.toString().substr(0, 8);
    EXPECT_EQ(type({"enable", id.c_str()}), "\"lights off\", \"darkness\": starts org.example.Lamp\n");
    EXPECT_EQ(stored()[1].action, QuickCommandAction(action::LaunchApp{"org.example.Lamp"}));
    EXPECT_TRUE(stored()[1].isEnabled);
    EXPECT_EQ(type({"remove", "open mail"}), "Removed: \"open mail\", \"Show my mail\"\n");
    EXPECT_EQ(stored().size(), 1u);
}

TEST_F(QuickCommandsOnTheCommandLine, RefuseWhatCouldNeverWorkAndChangeNothing)
{
    type({"add", "open mail", "--url", "https://a.b"});
    type({"add", "open mail", "--url", "https://c.d"});
    const auto before = stored();
    const auto firstId = before[0].id.toString();
    const struct {
        std::vector<const char*> words;
        const char* part;
    } kCases[] = {
        {{"add", "open news"}, "--url URL, --app ID or --shortcut NAME"},
        {{"add", "--url", "https://a.b"}, "phrases is required"},
        {{"add", "news", "", "--url", "https://a.b"}, "A phrase is empty"},
        {{"add", " \xC2\xA0", "--url", "https://a.b"}, "A phrase is empty"},
        {{"add", "ne\xFFws", "--url", "https://a.b"}, "no text in UTF-8"},
        {{"add", "open news", "--url", ""}, "The address is empty"},
        {{"add", "open news", "--url", "news.example.org"}, "such as \"https://news.example.org\""},
        {{"add", "open news", "--url", "localhost:8080/"}, "such as \"https://localhost:8080/\""},
        {{"add", "open news", "--url", "localhost:8080/board"}, "no whole address"},
        {{"add", "open news", "--app", " "}, "The application is empty"},
        {{"add", "open news", "--app", "/usr/bin/vi"}, "no name of a desktop entry"},
        {{"add", "open news", "--shortcut", "../news"}, "no name of a shortcut"},
        {{"add", "open news", "--url", "https://a.b", "--app", "a.b"}, "excludes"},
        {{"edit", "open mails", "--url", "https://a.b"}, "Did you mean \"open mail\"?"},
        {{"remove", "open mail"}, "is several commands. Name one by its identifier:"},
        {{"edit", firstId.c_str()}, "Say what is to be changed"},
        {{"remove", "zz"}, "no command with the phrase \"zz\""},
    };
    for (const auto& [words, part] : kCases) {
        const auto said = type(words);
        EXPECT_THAT(said, HasSubstr(part));
        EXPECT_TRUE(isdigit(static_cast<unsigned char>(said.back()))) << "it failed, and says so by its exit code";
    }
    EXPECT_EQ(stored(), before);
}

TEST_F(QuickCommandsOnTheCommandLine, WarnOfWhatIsProbablyNotMeant)
{
    EXPECT_THAT(type({"add", "mail", "--url", "https://a.b"}), HasSubstr("\"mail\" is so short"));
    EXPECT_THAT(type({"add", "Mail", "--url", "https://c.d"}), HasSubstr("a phrase of another command too"));
    EXPECT_THAT(type({"add", "good night", "--shortcut", "night"}),
                HasSubstr("There is no shortcut \"night\" yet. Put an executable file of that name into "
                          "/home/ann/shortcuts"));
    storage.enableQuickCommands.set(false);
    EXPECT_THAT(type({"add", "call the office", "--url", " tel:5551234567"}), HasSubstr("opens tel:5551234567\n"));
    EXPECT_THAT(type({"add", "good morning", "--url", "https://a.b"}),
                HasSubstr("vocalith settings set enableQuickCommands true"));
    EXPECT_THAT(type({"test", "good morning"}), HasSubstr("vocalith settings set enableQuickCommands true"));
}

TEST_F(QuickCommandsOnTheCommandLine, TellWhatATextWouldDoAndWhy)
{
    type({"add", "open mail", "--url", "https://a.b"});
    type({"add", "close the window", "--shortcut", "lights"});
    type({"add", "start the music", "--app", "org.example.Music"});
    type({"disable", "start the music"});
    EXPECT_EQ(type({"test", "Open Mail."}), "opens https://a.b: \"open mail\" is in what was said, to the letter.\n");
    EXPECT_EQ(type({"test", "opus", "wail"}),
              "opens https://a.b: \"open mail\" is 3 characters away from \"opus wail\" (at most 4 count).\n");
    EXPECT_EQ(type({"test", "Hello all of you"}),
              "No quick command matches. The text would be dictated.\nThe nearest phrases:\n"
              "  \"open mail\" is 7 characters away from \"hello all\" (at most 4 count)\n"
              "  \"close the window\" is 13 characters away from \"hello all of you\" (at most 4 count)\n1");
    EXPECT_THAT(type({"test", "open mal"}),
                HasSubstr("\"open mail\" is longer than what was said: 9 characters against 8 characters\n"));
    EXPECT_THAT(type({"test", "start the music"}), HasSubstr("vocalith commands enable \"start the music\""));
    EXPECT_THAT(type({"test", "open mai."}), HasSubstr("9 characters against 8 characters\n"));
    EXPECT_TRUE(launcher.asked().empty());
}

TEST_F(QuickCommandsOnTheCommandLine, GoToAnotherMachineAndBack)
{
    type({"add", "öffne 📬", "--url", "https://a.b"});
    const auto file = (folder / "commands.json").string();
    EXPECT_EQ(type({"export", file.c_str()}), "");
    EXPECT_EQ(readFile(file), type({"export"}));
    EXPECT_EQ(readFile(file), type({"list", "--json"}));
    EXPECT_THAT(type({"export", file.c_str()}), HasSubstr("Add --force to replace it"));
    const auto exported = stored();

    type({"edit", "öffne 📬", "--url", "https://c.d"});
    type({"add", "open maps", "--url", "https://e.f"});
    EXPECT_EQ(type({"import", file.c_str()}), "Commands taken over: 1.\n");
    ASSERT_EQ(stored().size(), 2u);
    EXPECT_EQ(stored()[0], exported[0]) << "it is the same command, in its place";

    const auto before = stored();
    const std::string known = R"({"id":"3F2504E0-4F89-11D3-9A0C-0305E82C3301","isEnabled":true,)";
    const auto mail = known + R"("triggerPhrases":["a b"],"action":{"openURL":{"_0":"https://a.b"}}})";
    for (const auto& [text, part] : std::vector<std::pair<std::string, std::string>>{
             {"{", "That is no list of quick commands"},
             {"{}", "That is no list of quick commands"},
             {"[1]", "[0]"},
             {"[" + known + R"("triggerPhrases":["a b"],"action":{"eject":{}}}])", "unknown case \"eject\""},
             {"[" + known + R"("triggerPhrases":[],"action":{"openURL":{"_0":"https://a.b"}}}])", "Command 1 of"},
             {fmt::format("[{0},{0}]", mail), "Commands 1 and 2 of the file have the same identifier"},
             {"[" + known + R"("triggerPhrases":["a\u0000b"],"action":{"openURL":{"_0":"https://a.b"}}}])", "UTF-8"}}) {
        writeFile(file, text);
        EXPECT_THAT(type({"import", file.c_str()}), HasSubstr(part));
    }
    EXPECT_THAT(type({"import", (file + "x").c_str()}), HasSubstr("cannot be read"));
    EXPECT_EQ(stored(), before);
}

TEST_F(QuickCommandsOnTheCommandLine, SayThatAListCannotBeReadAndTakeItBackOnceMended)
{
    const std::string list =
        R"([{"id":"3F2504E0-4F89-11D3-9A0C-0305E82C3301","triggerPhrases":["a b c"],"action":{"eject":{}},)"
        R"("isEnabled":true}])";
    writeFile(folder / "settings.json",
              R"({"settingsVersion":1,"enableQuickCommands":true,"quickCommands":)" + list + "}");
    PersistentAppStorage damaged(folder / "settings.json", clock, Logger());
    QuickCommandsManager commands({damaged, analytics, launcher, automations, notices, clock}, log);
    Terminal terminal;
    CommandsCommand(CommandsCommand::Services{commands, damaged, automations, shortcuts, terminal})
        .run(CommandsOptions(CommandsListOptions()));
    ASSERT_EQ(notices.shown.size(), 1u);
    const auto start = notices.shown[0].find("commands import \"") + 17;
    const auto file = notices.shown[0].substr(start, notices.shown[0].find('"', start) - start);
    auto text = readFile(file);
    text.replace(text.find("\"eject\": {}"), 11, R"("launchApp": {"bundleID": "a.b"})");
    writeFile(file, text);
    EXPECT_EQ(type({"import", file.c_str()}), "Commands taken over: 1.\n");
}

} // namespace
