// `vocalith replacements`, from the words that are typed to what is printed and stored.

#include "app/cli/replacements/ReplacementsCommand.h"

#include "app/cli/CommandLine.h"
#include "app/cli/ExitCode.h"
#include "app/cli/terminal/Terminal.h"
#include "core/pipeline/replacements/WordReplacementService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/RecordedNotices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using Timing = WordReplacementTiming;

namespace {

class ReplacementsOnTheCommandLine : public testing::Test {
protected:
    /// What the command says, with its exit code where that is not 0.
    std::string type(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), {"vocalith", "replacements"});
        std::vector<const char*> words;
        words.reserve(arguments.size());
        for (const auto& argument : arguments)
            words.push_back(argument.c_str());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const auto command = parseCommandLine(static_cast<int>(words.size()), words.data());
        int code = command ? exitSuccess : command.error();
        if (command) {
            Terminal terminal;
            ReplacementsCommand ran(storage, service, terminal);
            code = await(ran.run(std::get<ReplacementsOptions>(*command)));
        }
        const auto out = testing::internal::GetCapturedStdout();
        const auto said = out + testing::internal::GetCapturedStderr();
        return code == exitSuccess ? said : said + "exit " + std::to_string(code);
    }

    bool says(const std::vector<std::string>& arguments, const std::string& part)
    {
        const auto said = type(arguments);
        const bool found = said.find(part) != std::string::npos;
        EXPECT_TRUE(found) << said;
        return found;
    }

    const std::vector<WordReplacement>& list() { return storage.wordReplacements.get(); }

    TemporaryFolder folder;
    FakeClock clock;
    RecordedLog log;
    RecordedNotices notices;
    PersistentAppStorage storage{folder / "settings.json", clock, log.logger()};
    WordReplacementService service{storage, notices, log.logger()};
};

TEST_F(ReplacementsOnTheCommandLine, AreAddedShownChangedAndRemoved)
{
    EXPECT_NE(type({}).find("There are no word replacements."), std::string::npos);
    EXPECT_EQ(type({"add", "colour, colur", "color"}), "1  colour, colur  →  color  before AI\n");
    type({"add", "--regex", R"((\d+) euros?)", "$1\\n€", "--timing", "AFTERAI"});
    type({"add", "very", "", "--timing", "both"});
    EXPECT_EQ(type({"list"}), "1  colour, colur  →  color  before AI\n"
                              "2  (\\d+) euros?   →  $1\\n€  after AI, regex\n"
                              "3  very           →  \"\"     both\n");
    EXPECT_EQ(type({"edit", "Colur", "--replacement", "Farbe", "--timing", "both"}),
              "1  colour, colur  →  Farbe  both\n");
    EXPECT_EQ(type({"edit", "2", "--plain", "--original", "Euro"}), "2  Euro  →  $1\\n€  after AI\n");
    EXPECT_EQ(list()[1], (WordReplacement{list()[1].id, "Euro", "$1\\n€", false, Timing::afterAI}));
    EXPECT_EQ(type({"remove", "VERY", list()[0].id.toString()}), "Removed:\n"
                                                                 "1  colour, colur  →  Farbe  both\n"
                                                                 "3  very           →  \"\"     both\n");
    EXPECT_EQ(list().size(), 1u);
    EXPECT_TRUE(says({"list", "--json"}, "\"original\": \"Euro\""));
}

TEST_F(ReplacementsOnTheCommandLine, WhatCannotBeMeantIsRefusedAndChangesNothing)
{
    type({"add", "colour, 2", "color"});
    type({"add", "colour", "color", "--timing", "afterAI"});
    const auto before = list();
    const struct {
        std::vector<std::string> arguments;
        std::string part;
    } kCases[] = {
        {{"add", "(a", "b", "--regex"},
         "\"(a\" cannot be used: it is not a valid regular expression: a parenthesis has no partner, at character 2."},
        {{"add", " , ", "b"}, "it has nothing to look for"},
        {{"add", "\xFF", "b"}, "UTF-8"},
        {{"add", "colour", "b", "--timing", "afterAI"}, "edit 2\" changes it:\n2  colour  →  color  after AI"},
        {{"add", "one"}, "replacement is required"},
        {{"add", "a", "b", "--timing", "never"}, "never"},
        {{"edit", "colour", "--replacement", "x"},
         "could be 2 entries. Name the one you mean by its number:\n1  colour"},
        {{"edit", "2", "--replacement", "x"}, "could be 2 entries. Name the one you mean by its identity:\n1  colour"},
        {{"edit", "color", "--replacement", "x"}, "no replacement \"color\". Did you mean \"colour\"?"},
        {{"edit", "1"}, "Say what to change"},
        {{"edit", "1", "--regex", "--plain"}, "exclude"},
        {{"edit", "1", "--regex", "--original", "["}, "a bracket [ is not closed"},
        {{"edit", "1", "--original", "colour", "--timing", "afterAI"}, "such an entry already"},
        {{"remove", "1", "nothing"}, "Nothing was removed."},
        {{"remove"}, "which is required"},
    };
    for (const auto& [arguments, part] : kCases) {
        EXPECT_TRUE(says(arguments, part));
        EXPECT_TRUE(says(arguments, "exit 2"));
    }
    EXPECT_EQ(list(), before);
    EXPECT_TRUE(says({"edit", list()[1].id.toString(), "--replacement", "x"}, "2  colour  →  x"));
    EXPECT_TRUE(says({"add", "C++", "see plus plus"}, "Notice: \"C++\" begins or ends with a sign"));
    EXPECT_EQ(list().size(), 3u) << "a warning, no refusal";
}

TEST_F(ReplacementsOnTheCommandLine, ListsComeAndGoAsFiles)
{
    type({"add", "colour", "color"});
    writeFile(folder / "list.csv", "original;replacement\r\ncolour;Farbe\r\nLiz;Elizabeth\r\n");
    EXPECT_EQ(type({"import", (folder / "list.csv").string()}), "Added: 1. Changed: 1. There already: 0.\n");
    EXPECT_EQ(type({"import", (folder / "list.csv").string()}), "Added: 0. Changed: 0. There already: 2.\n");
    EXPECT_EQ(type({"export"}), "original,replacement,isRegex,timing\r\n\"colour\",\"Farbe\",false,beforeAI\r\n"
                                "\"Liz\",\"Elizabeth\",false,beforeAI\r\n");
    const auto file = (folder / "list.json").string();
    EXPECT_EQ(type({"export", file}), "");
    EXPECT_TRUE(says({"export", file}, "Add --force to replace it.\nexit 2"));
    const auto kept = list();
    EXPECT_EQ(type({"remove", "liz"}), "Removed:\n2  Liz  →  Elizabeth  before AI\n");
    EXPECT_EQ(type({"import", "--replace", file}), "The list has 2 entries now, in place of 1.\n");
    EXPECT_EQ(list(), kept);

    writeFile(folder / "bad.csv", "a,b\nc,d,perhaps\n(,x,true\n");
    EXPECT_EQ(
        type({"import", (folder / "bad.csv").string(), "--replace"}),
        "Error: Line 2, column 5: isRegex is \"perhaps\", but must be true or false.\nError: Nothing was changed.\n"
        "exit 1");
    EXPECT_TRUE(says({"import", (folder / "none.csv").string()}, "No such file or directory.\nexit 1"));
    EXPECT_EQ(list(), kept);
}

TEST_F(ReplacementsOnTheCommandLine, ATestPrintsTheTextAndSaysWhatMatched)
{
    type({"add", "colour", "color"});
    type({"add", "color", "Farbe", "--timing", "afterAI"});
    EXPECT_EQ(type({"test", "a colour, a Colour"}), "a Farbe, a Farbe\n"
                                                    "Before AI: \"colour\" replaced 2 times\n"
                                                    "After AI: \"color\" replaced 2 times\n");
    EXPECT_EQ(type({"test", "colour", "--timing", "beforeAI"}), "color\nBefore AI: \"colour\" replaced 1 time\n");
    EXPECT_EQ(type({"test", "colour", "--timing", "afterAI"}), "colour\n");
    storage.wordReplacements.set({{Uuid::random(), "(", "x", true}});
    EXPECT_TRUE(says({"test", "text"}, "text\nBefore AI: \"(\" skipped: a parenthesis has no partner"));
}

} // namespace
