#include "tests/core/storage/settings/SettingsFixture.h"
#include "tests/support/MainLoop.h"

using namespace vocalith;
using namespace vocalith::test;

namespace {

class SettingsDamageTest : public SettingsFixture {
protected:
    /// Four entries, one of them long and nested, with text that looks like the end or the beginning of an entry.
    std::string wholeFile()
    {
        {
            auto settings = storage();
            settings.mainPrompt.set([] {
                auto prompt = defaultMainPrompt();
                prompt.prompt = "}\n  \"playSound\": false,\n";
                return prompt;
            }());
            settings.whisperLanguage.set("de");
            settings.whisperPrompt.set("Grüße");
            settings.localOnlyMode.set(true);
        }
        auto text = content();
        std::filesystem::remove(m_file);
        return text;
    }
    static std::string replaced(std::string text, const std::string& from, const std::string& to)
    {
        const auto at = text.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        return text.replace(at, from.size(), to);
    }
};

TEST_F(SettingsDamageTest, CostsOnlyTheEntriesThatItHit)
{
    const auto whole = wholeFile();
    const auto upTo = [&](const std::string& text) { return whole.substr(0, whole.find(text)); };
    struct Case {
        const char* what;
        std::string text;
        std::string lost; ///< of: p(rompt), l(anguage), w(hisper prompt), o(nly local)
    };
    const std::vector<Case> cases = {
        {"a comma is missing", replaced(whole, "\"de\",", "\"de\""), ""},
        {"two commas", replaced(whole, "\"de\",", "\"de\",,"), ""},
        {"a comma too many at the end", replaced(whole, "true\n}", "true,\n}"), ""},
        {"the last brace is missing", replaced(whole, "true\n}", "true\n"), ""},
        {"a brace too many", whole + "}", ""},
        {"zeros in place of the end", upTo(" true\n") + std::string(4096, '\0'), "o"},
        {"zeros in place of everything", std::string(4096, '\0'), "plwo"},
        {"a comment", replaced(whole, "  \"whisperLanguage\"", "// mine\n  \"whisperLanguage\""), "p"},
        {"a broken value", replaced(whole, "\"de\",", "de,"), "l"},
        {"an open string", replaced(whole, "\"de\",", "\"de,"), "l"},
        {"a bracket that is not closed", replaced(whole, "\"enabledTools\": [],", "\"enabledTools\": [,"), "p"},
        {"bytes that are no text", replaced(whole, "Grüße", "Gr\xff\xfe"), "w"},
        {"cut off in a value", upTo("e\",\n  \"whisperPrompt"), "lwo"},
        {"cut off after a key", upTo(" true\n"), "o"},
        {"cut off in the first entry", whole.substr(0, 30), "plwo"},
        {"nothing but noise", std::string("\x8f\x02{{\"\0\xc3\n  \"\n  \"", 15), "plwo"},
        {"another kind of JSON", "[1]", "plwo"},
    };
    for (const auto& [what, text, lost] : cases) {
        writeFile(m_file, text);
        {
            auto settings = storage();
            RecordedNotices notices;
            settings.showProblems(notices);
            ASSERT_EQ(notices.shown.size(), 1U) << what;
            EXPECT_NE(notices.shown[0].find(keptAside().back().string()), std::string::npos) << notices.shown[0];
            const auto isLost = [&lost = lost](char entry) { return lost.find(entry) != std::string::npos; };
            EXPECT_EQ(settings.mainPrompt.get().prompt == "}\n  \"playSound\": false,\n", !isLost('p')) << what;
            EXPECT_EQ(settings.whisperLanguage.get() == "de", !isLost('l')) << what;
            EXPECT_EQ(settings.whisperPrompt.get() == "Grüße", !isLost('w')) << what;
            EXPECT_EQ(settings.localOnlyMode.get(), !isLost('o')) << what;
            EXPECT_TRUE(settings.playSound.get()) << what << ": the text of a prompt was taken for an entry";
        }
        EXPECT_EQ(readFile(keptAside().back()), text) << what;
        const auto mended = content();
        RecordedNotices notices;
        auto again = storage();
        again.showProblems(notices);
        EXPECT_TRUE(notices.shown.empty()) << what << " was told twice";
        EXPECT_EQ(content(), mended);
        m_clock.advance(std::chrono::seconds(1));
    }
    EXPECT_EQ(keptAside().size(), cases.size()) << "one that was kept was overwritten";
    EXPECT_TRUE(m_log.has("Cannot parse settings: "));
}

TEST_F(SettingsDamageTest, AFileThatWasFormattedAnewIsReadAsWell)
{
    for (const std::string indent : {"    ", "\t", " "}) {
        std::string text = "{\n  \"whisperPrompt\": \"a\",\n  \"mainPrompt\": {\n    \"playSound\": false\n  },\n"
                           "  \"whisperThreads\": 3,\n  \"whisperLanguage\": \"d";
        for (auto at = text.find("  "); at != std::string::npos; at = text.find("  ", at + indent.size()))
            text.replace(at, 2, indent);
        writeFile(m_file, text);
        RecordedNotices notices;
        auto settings = storage();
        settings.showProblems(notices);
        EXPECT_EQ(settings.whisperPrompt.get(), "a") << indent << "|";
        EXPECT_EQ(settings.whisperThreads.get(), 3) << indent << "|";
        EXPECT_TRUE(settings.playSound.get()) << "what stands inside an entry was taken for one";
        ASSERT_EQ(notices.shown.size(), 1U);
        EXPECT_NE(notices.shown[0].find("Lost: whisperLanguage."), std::string::npos) << notices.shown[0];
    }
}

TEST_F(SettingsDamageTest, NamesWhatWasLostAndKeepsEveryDamagedFile)
{
    for (int i = 1; i <= 2; ++i) {
        writeFile(m_file, "{\n  \"whisperPrompt\": \"cut of");
        RecordedNotices notices;
        auto settings = storage();
        settings.showProblems(notices);
        ASSERT_EQ(notices.shown.size(), 1U);
        EXPECT_NE(notices.shown[0].find("Lost: whisperPrompt."), std::string::npos) << notices.shown[0];
    }
    ASSERT_EQ(keptAside().size(), 2U);
    EXPECT_EQ(keptAside()[0].filename(), "settings.json.unreadable-2026-03-01T12-00-00Z");
}

TEST_F(SettingsDamageTest, AnEmptyFileIsNoDamage)
{
    for (const std::string empty : {"", "\n", "{}"}) {
        writeFile(m_file, empty);
        auto settings = storage();
        EXPECT_EQ(settings.whisperLanguage.get(), "auto");
        EXPECT_EQ(content(), empty);
        settings.whisperLanguage.set("sv");
        EXPECT_EQ(chosen(), (Json{{"whisperLanguage", "sv"}}));
    }
    EXPECT_TRUE(keptAside().empty());
    EXPECT_TRUE(m_log.lines().empty());
}

TEST_F(SettingsDamageTest, WhatARunningProgramKnowsIsNotLostWithTheFile)
{
    auto settings = storage();
    settings.whisperLanguage.set("da");
    bool sound = true;
    for (const std::string ruin : {"truncat", "", "absent"}) {
        if (ruin == "absent")
            std::filesystem::remove(m_file);
        else
            writeFile(m_file, ruin);
        drainMainThread();
        EXPECT_EQ(settings.whisperLanguage.get(), "da") << "an editor empties a file before it writes it";
        sound = !sound;
        settings.playSound.set(sound);
        EXPECT_EQ(chosen(), (Json{{"playSound", sound}, {"whisperLanguage", "da"}})) << ruin;
    }
    EXPECT_EQ(keptAside().size(), 1U);
}

TEST_F(SettingsDamageTest, AFileThatCannotBeReadIsLeftAlone)
{
    std::filesystem::create_directory(m_file);
    auto settings = storage();
    RecordedNotices notices;
    settings.showProblems(notices);
    ASSERT_EQ(notices.shown.size(), 1U);
    EXPECT_NE(notices.shown[0].find("The settings cannot be read: "), std::string::npos);
    settings.whisperLanguage.set("da");
    EXPECT_EQ(settings.whisperLanguage.get(), "da");
    EXPECT_TRUE(settings.whyNotStored());
    EXPECT_TRUE(std::filesystem::is_directory(m_file));
}

} // namespace
