#include "core/pipeline/scripts/ExampleScripts.h"

#include "tests/core/pipeline/scripts/ScriptFixture.h"

using namespace vocalith;
using namespace vocalith::test;

namespace {

class Examples : public ScriptFixture {
protected:
    /// Puts a program first in PATH that writes what it is called with, and its input, into a file.
    void standIn(const std::string& program)
    {
        const auto file = folder / "bin" / program;
        std::filesystem::create_directories(folder / "bin");
        writeFile(file, "#!/bin/sh\nprintf '%s|' \"$@\" > '" + called().string() + ".new'\nmv '" + called().string() +
                            ".new' '" + called().string() + "'\n");
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
        ::setenv("PATH", ((folder / "bin").string() + ":" + m_path).c_str(), 1);
    }
    void TearDown() override { ::setenv("PATH", m_path.c_str(), 1); }

    std::filesystem::path called() const { return folder / "called"; }

    /// Through the step, as a dictation would. Yields the text, or nothing where the run ended.
    std::optional<std::string> run(const std::string& name, const std::string& text)
    {
        const auto all = exampleScripts();
        const auto found = std::ranges::find(all, name, &ExampleScript::name);
        use(found == all.end() ? "" : found->script);
        context.transcript = text;
        const auto ended = await(before.run(context));
        EXPECT_EQ(context.diagnostics.size(), *ended ? 0u : 1u) << "no complaint, no status: " << context.endReason;
        return *ended ? std::nullopt : std::optional(context.transcript);
    }

private:
    const std::string m_path = std::getenv("PATH");
};

TEST_F(Examples, ReplaceWordsAndKeepTheirCase)
{
    const struct {
        std::string said;
        std::string text;
    } kCases[] = {
        {"Colour me grey, not GREY. Größe: discolour?", "Color me gray, not GRAY. Größe: discolour?"},
        {"organise\nOrganise", "organize\nOrganize"},
        {"-n \\n $HOME `id`", "-n \\n $HOME `id`"},
    };
    for (const auto& [said, text] : kCases)
        EXPECT_EQ(run("replace-words", said), text);
}

TEST_F(Examples, SearchTheWebAndEndThere)
{
    standIn("xdg-open");
    EXPECT_EQ(run("search-the-web", "naïve & \"rock\" 100%\n#1"), std::nullopt);
    ASSERT_TRUE(runUntil([&] { return std::filesystem::exists(called()); }));
    EXPECT_EQ(readFile(called()), "https://www.google.com/search?q=na%C3%AFve%20%26%20%22rock%22%20100%25%0A%231|");
}

TEST_F(Examples, SpeakTheTextAndPassItOn)
{
    standIn("spd-say");
    EXPECT_EQ(run("speak", "-e is no option"), "-e is no option");
    ASSERT_TRUE(runUntil([&] { return std::filesystem::exists(called()); }));
    EXPECT_EQ(readFile(called()), "--|-e is no option|");
}

TEST_F(Examples, PassTheTextOnWhereWhatTheyNeedIsNotInstalled)
{
    standIn("cat"); // there is a folder, with nothing that is needed
    std::filesystem::remove(folder / "bin/cat");
    std::filesystem::create_symlink("/bin/cat", folder / "bin/cat");
    ::setenv("PATH", (folder / "bin").c_str(), 1);
    for (const auto& example : exampleScripts())
        EXPECT_EQ(run(example.name, "words"), "words") << example.name;
}

} // namespace
