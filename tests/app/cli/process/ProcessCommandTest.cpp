// A text through the whole pipeline, as a user tries rules: arguments, standard input and output, exit code.

#include "base/Json.h"
#include "core/storage/settings/DefaultPrompt.h"
#include "models/HistoryEntry.h"
#include "models/QuickCommand.h"
#include "models/WordReplacement.h"
#include "tests/support/program/ProgramRun.h"

#include <gtest/gtest.h>

#include <csignal>

#include <unistd.h>

using namespace vocalith;
using namespace vocalith::test;
namespace fs = std::filesystem;

namespace {

WordReplacement replacement(const std::string& original, const std::string& with, WordReplacementTiming timing)
{
    return {Uuid::random(), original, with, false, timing};
}

class Process : public testing::Test {
protected:
    using Arguments = std::vector<std::string>;

    Ended run(Arguments arguments, const std::string& input)
    {
        arguments.insert(arguments.begin(), "process");
        ProgramRun program(home.path(), arguments);
        program.process().write(input.data(), static_cast<qint64>(input.size()));
        program.process().closeWriteChannel();
        return program.wait();
    }

    /// Settings with the main prompt's scripts, a second prompt "Letter", and word replacements.
    void set(const std::string& before, const std::string& after, const std::vector<WordReplacement>& replacements = {})
    {
        auto main = defaultMainPrompt();
        main.preAIPromptScript = before;
        main.postAIPromptScript = after;
        auto letter = defaultMainPrompt();
        letter.id = Uuid::random();
        letter.name = "Letter";
        letter.mode = ActionMode::historyOnly;
        letter.preAIPromptScript = "print -n 'Dear '; cat";
        settings["mainPrompt"] = toJson(main);
        settings["aiPresets"] = toJson(std::vector{letter});
        settings["wordReplacements"] = toJson(replacements);
        writeFile(home / "settings.json", dumpJson(settings));
    }

    std::size_t kept() const
    {
        if (!fs::exists(home / "History"))
            return 0;
        std::size_t files = 0;
        for (const auto& file : fs::recursive_directory_iterator(home / "History"))
            files += file.is_regular_file() ? 1 : 0;
        return files;
    }

    std::string script(const std::string& text)
    {
        writeFile(home / "script.zsh", text);
        return (home / "script.zsh").string();
    }

    TemporaryFolder home;
    Json settings{{"enableQuickCommands", true}};
};

TEST_F(Process, RunsTheStepsInTheirOrderOverTheText)
{
    using enum WordReplacementTiming;
    const struct {
        std::string what;
        std::string before;
        std::string after;
        std::vector<WordReplacement> replacements;
        std::string input;
        std::string output;
    } kCases[] = {
        {"nothing is set up", "", "", {}, "  words \n", "words\n"},
        {"no UTF-8", "", "", {}, "a\xff z", "a\uFFFD z\n"},
        {"the script comes before the words", "print one", "", {replacement("one", "two", beforeAI)}, "x", "two\n"},
        {"the words come before the script",
         "",
         "sed s/two/three/",
         {replacement("one", "two", afterAI)},
         "one",
         "three\n"},
        {"both stages, once each",
         "sed s/a/b/",
         "sed s/d/e/",
         {replacement("b", "c", beforeAI), replacement("c", "d", afterAI)},
         "a",
         "e\n"},
        {"both timings", "", "", {replacement("a", "a a", both)}, "a", "a a a a\n"},
        {"lines and what is around them", "cat; print", "", {}, "one\n\ntwo", "one\n\ntwo\n"},
        {"a failing script that prints", "print kept; exit 3", "", {}, "x", "kept\n"},
        {"a background child that holds the pipe", "sleep 30 & print fast", "", {}, "x", "fast\n"},
    };
    for (const auto& [what, before, after, replacements, input, output] : kCases) {
        set(before, after, replacements);
        const auto ended = run({}, input);
        EXPECT_EQ(ended.out, output) << what;
        EXPECT_EQ(ended.err, "") << what;
        EXPECT_EQ(ended.code, 0) << what;
    }
    EXPECT_EQ(kept(), 0u) << "nothing was to be kept";
}

TEST_F(Process, TakesTheNamedPromptOrAScriptInPlaceOfItsOwn)
{
    set("print -n 'main: '; cat", "");
    EXPECT_EQ(run({}, "x").out, "main: x\n");
    EXPECT_EQ(run({"--prompt", "letter"}, "x").out, "Dear x\n") << "whatever the prompt does with its text";
    EXPECT_EQ(run({"--before-script", script("tr a-z A-Z"), "--after-script", script("tr a-z A-Z")}, "x").out, "X\n");

    EXPECT_EQ(run({"--journal"}, "x").out, "x\n") << "the journal has no prompt";

    const struct {
        Arguments arguments;
        std::string input;
        int code;
        std::string err;
    } kFaults[] = {
        {{"--prompt", "leter"}, "x", 1, "There is no prompt \"leter\". Did you mean \"Letter\"?"},
        {{"--before-script", (home / "none").string()}, "x", 1, "cannot be read: No such file or directory."},
        {{"--prompt", ""}, "x", 2, "--prompt: The name is empty"},
        {{"--before-script", ""}, "x", 1, "cannot be read"},
        {{"--journal", "--prompt", "letter"}, "x", 2, "--prompt excludes --journal"},
        {{}, " \n", 2, "There is no text on standard input. Give it some:"},
    };
    for (const auto& [arguments, input, code, err] : kFaults) {
        const auto ended = run(arguments, input);
        EXPECT_EQ(ended.code, code);
        EXPECT_EQ(ended.out, "");
        EXPECT_NE(ended.err.find(err), std::string::npos) << ended.err;
    }
}

TEST_F(Process, SaysWhyNothingCameOut)
{
    set("cat >/dev/null", "");
    const auto ended = run({}, "words");
    EXPECT_EQ(ended.code, 0) << "it is what the script wanted";
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err,
              "The script before the AI of the prompt \"Clean up\" printed nothing, so nothing was inserted.\n");

    set("tidyy", "");
    EXPECT_NE(run({}, "words").err.find("command not found: tidyy) and printed nothing"), std::string::npos);

    settings["quickCommands"] = toJson(std::vector{QuickCommandDefinition{
        Uuid::random(), {"start editor"}, quick_command_action::LaunchApp{"org.example.NotInstalled"}, true}});
    set("", "");
    const auto failed = run({}, "Start editor.");
    EXPECT_EQ(failed.code, 1);
    EXPECT_TRUE(failed.err.starts_with("The quick command \"start editor\" failed. The application")) << failed.err;
    EXPECT_EQ(parseJson(run({"--json"}, "Start editor.").out).value()["failed"], true);
    settings.erase("quickCommands");

    set("", "");
    ProgramRun full(home.path(), {"process"}, {.output = "/dev/full"});
    full.process().write("words");
    full.process().closeWriteChannel();
    const auto notWritten = full.wait();
    EXPECT_EQ(notWritten.code, 1);
    EXPECT_NE(notWritten.err.find("could not be written to standard output"), std::string::npos) << notWritten.err;
    EXPECT_NE(notWritten.err.find("It was saved in"), std::string::npos) << notWritten.err;
}

TEST_F(Process, AStandardStreamThatIsClosedIsAnErrorAndNoOtherFile)
{
    set("", "");
    const auto deaf = ProgramRun(home.path(), {"process"}, {.closed = {STDIN_FILENO}}).wait();
    EXPECT_EQ(deaf.code, 2);
    EXPECT_NE(deaf.err.find("Standard input cannot be read"), std::string::npos) << deaf.err;

    ProgramRun dumb(home.path(), {"process"}, {.closed = {STDOUT_FILENO}});
    dumb.process().write("words");
    dumb.process().closeWriteChannel();
    const auto notWritten = dumb.wait();
    EXPECT_EQ(notWritten.code, 1);
    EXPECT_NE(notWritten.err.find("It was saved in"), std::string::npos) << notWritten.err;
}

TEST_F(Process, ExplainsWhatEachStepDid)
{
    set("sed s/colour/tone/; print -u2 'a\x1b[31mred'", "",
        {replacement("tone", "tint", WordReplacementTiming::afterAI)});
    const auto ended = run({"--explain"}, "my colour");
    EXPECT_EQ(ended.out, "my tint\n");
    EXPECT_TRUE(ended.err.starts_with("HistoryStep                   unchanged\n"
                                      "QuickCommandStep              unchanged\n"
                                      "BashScriptStep (before)       changed\n"
                                      "  before: \"my colour\"\n"
                                      "  after:  \"my tone\"\n"
                                      "  bash_script: \"my tone\"\n"
                                      "  bash_script_error: \"a\\u001b[31mred\\n\"\n"
                                      "ReplacementsStep (beforeAI)   unchanged\n"
                                      "AITransformStep               unchanged\n"
                                      "HistoryStep                   unchanged\n"
                                      "ReplacementsStep (afterAI)    changed\n"
                                      "  before: \"my tone\"\n"
                                      "  after:  \"my tint\"\n"))
        << ended.err;
    EXPECT_TRUE(ended.err.ends_with("BashScriptStep (after)        unchanged\n"
                                    "SpacingStep                   changed\n"
                                    "  before: \"my tint\"\n"
                                    "  after:  \"my tint \"\n"
                                    "AutoCopyToClipboardStep       unchanged\n"
                                    "OutputStep                    unchanged\n"
                                    "HistoryStep                   unchanged\n"))
        << ended.err;
}

TEST_F(Process, TellsMachinesTheSameAsOneObject)
{
    set("", "cat >/dev/null");
    const auto silent = parseJson(run({"--json"}, "words").out).value();
    EXPECT_EQ(silent["end"], "early");
    EXPECT_FALSE(silent.contains("text"));
    EXPECT_EQ(silent["reason"],
              "The script after the AI of the prompt \"Clean up\" printed nothing, so nothing was inserted.");
    ASSERT_EQ(silent["steps"].size(), 8u) << "no step after the one that ended the run";
    EXPECT_EQ(silent["steps"][7]["endedTheRun"], true);

    set("print '\"two\nlines\"'", "");
    const auto ended = run({"--json", "--explain"}, "words");
    const auto whole = parseJson(ended.out).value();
    EXPECT_EQ(whole["text"], "\"two\nlines\"");
    EXPECT_EQ(whole["end"], "complete");
    EXPECT_EQ(whole["steps"].size(), 12u);
    EXPECT_EQ(whole["steps"][2]["before"], "words");
    EXPECT_EQ(whole["steps"][2]["notes"][0]["label"], "bash_script");
    EXPECT_EQ(ended.err, "");
}

TEST_F(Process, IsKeptOnlyWhereThatIsAskedFor)
{
    set("print changed", "");
    const auto ended = run({"--history"}, "words");
    EXPECT_EQ(ended.out, "changed\n");
    EXPECT_NE(ended.err.find("vocalith history show "), std::string::npos) << ended.err;
    EXPECT_EQ(kept(), 1u);
    const auto shown = ProgramRun(home.path(), {"history", "show", "last"}).wait();
    EXPECT_NE(shown.out.find("Transcript\nwords\n\nFinal text\nchanged\n"), std::string::npos)
        << shown.out << shown.err;
}

TEST_F(Process, CtrlCEndsTheScriptToo)
{
    const auto id = home / "id";
    set("print $$ > '" + id.string() + "'; sleep 60; print never", "");
    ProgramRun program(home.path(), {"process"});
    program.process().write("words");
    program.process().closeWriteChannel();
    runUntil([&] { return fs::exists(id) && readFile(id).ends_with('\n'); });
    ::kill(static_cast<pid_t>(program.process().processId()), SIGINT);
    const auto ended = program.wait();
    EXPECT_EQ(ended.code, 130);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "Cancelled.\n");
    EXPECT_NE(::kill(std::stoi(readFile(id)), 0), 0) << "no script is left behind";
}

TEST_F(Process, OnATerminalTheTextIsTypedAndAskedFor)
{
    set("", "");
    ProgramOnTerminal program(home.path(), {"process"});
    program.waitFor("end it with Ctrl-D");
    program.type("typed words\n\x04");
    EXPECT_EQ(program.wait(), 0);
    EXPECT_NE(program.screen().rfind("typed words\r\n"), program.screen().find("typed words\r\n")) << "echo and result";
}

TEST_F(Process, TheExamplesThatShipCanBeReadAndTried)
{
    const auto list = ProgramRun(home.path(), {"scripts"}).wait();
    for (const std::string name : {"replace-words", "search-the-web", "speak"}) {
        EXPECT_NE(list.out.find(name), std::string::npos) << list.out;
        const auto example = ProgramRun(home.path(), {"scripts", "show", name}).wait();
        EXPECT_NE(example.out.find("# Read input and"), std::string::npos) << example.out << example.err;
    }
    const auto shown = ProgramRun(home.path(), {"scripts", "show", "replace-words"}).wait();
    EXPECT_EQ(run({"--after-script", script(shown.out)}, "Colour").out, "Color\n");
    const auto unknown = ProgramRun(home.path(), {"scripts", "show", "speek"}).wait();
    EXPECT_EQ(unknown.code, 1);
    EXPECT_NE(unknown.err.find("Did you mean \"speak\"?"), std::string::npos) << unknown.err;
}

} // namespace
