#include "core/storage/settings/AnySetting.h"

#include "tests/core/storage/settings/SettingsFixture.h"

using namespace vocalith;
using namespace vocalith::test;

namespace {

class AnySettingTest : public SettingsFixture {
protected:
    /// What the setting holds after a command line was typed, or the sentence that refuses it.
    std::string typed(const std::string& key, const std::string& text)
    {
        auto settings = storage();
        auto* setting = settings.find(key);
        if (!setting)
            return "no such setting";
        const auto value = setting->parse(text);
        if (!value)
            return value.error();
        if (const auto checked = setting->check(*value); !checked)
            return checked.error();
        setting->assign(*value);
        return dumpJson(storage().find(key)->json());
    }
};

TEST_F(AnySettingTest, SimpleValuesAreTypedAsWords)
{
    const struct {
        const char* key;
        const char* text;
        const char* expected; ///< JSON, or how the refusal begins
    } cases[] = {
        {"playSound", "off", "false"},
        {"playSound", "YES", "true"},
        {"playSound", "maybe", "\"maybe\" is not true or false."},
        {"playSound", "1", "\"1\" is not true or false."},
        {"whisperThreads", "256", "256"},
        {"whisperThreads", "0", "0 is not a whole number from 1 to 256."},
        {"whisperThreads", "257", "257 is not a whole number from 1 to 256."},
        {"whisperThreads", "2.5", "The value is not a whole number from 1 to 256: expected an integer."},
        {"whisperThreads", "4 ", "4"},
        {"whisperThreads", "99999999999999999999", "The value is not a whole number from 1 to 256"},
        {"whisperTemperature", "0.2", "0.2"},
        {"whisperTemperature", "1.5", "1.5 is not a number from 0 to 1."},
        {"whisperTemperature", "1e999", "\"1e999\" is not a number from 0 to 1."},
        {"whisperMaxSentenceLength", "-1", "-1 is not a whole number, 0 or more."},
        {"fileTranscriptionBatchSize", "0", "0 is not a whole number, 1 or more."},
        {"whisperLanguage", "German", "\"de\""},
        {"whisperLanguage", "klingon", "\"klingon\" is not a spoken language"},
        {"appleTranscriptionLocale", "en_gb", "\"en-GB\""},
        {"appleTranscriptionLocale", "english please", "\"english please\" is not a language tag"},
        {"historyStoragePolicy", "oneyear", "\"oneYear\""},
        {"historyStoragePolicy", "decade", "\"decade\" is not one of: disabled, twelveHours,"},
        {"appAppearance", "system", "\"system\""},
        {"clipboardDictationPromptID", "none", "null"},
        {"clipboardDictationPromptID", "0b9c8d7e-1f2a-4b3c-8d4e-5f6a7b8c9d0e",
         "\"0B9C8D7E-1F2A-4B3C-8D4E-5F6A7B8C9D0E\""},
        {"clipboardDictationPromptID", "12", "The value is not an identifier (UUID), or none"},
        {"lastHistoryCleanupDate", "2026-02-03", "\"2026-02-03T00:00:00.000Z\""},
        {"lastHistoryCleanupDate", "2026-02-30", "\"2026-02-30\" is not a date such as"},
        {"transcriptionModelID", "LARGEV3", R"({"predefined":{"_0":"largeV3"}})"},
        {"transcriptionModelID", "mine", R"({"custom":{"_0":"mine"}})"},
        {"customModelsFolderBookmark", "/m", "\"L20=\""},
        {"customModelsFolderBookmark", "models", "\"models\" is not the absolute path of a folder, or none."},
        {"whisperPrompt", "none", "\"none\""},
        {"whisperPrompt", "Gr\xff\xe7", "\"Gr\uFFFD\uFFFD\" is not a text."},
        {"playSound", "\x1b[2Jno", "\"[2Jno\" is not true or false."},
        {"shownNotificationIDs", R"(["a"])", R"(["a"])"},
        {"shownNotificationIDs", "a", "The value is not a list of texts, as JSON: "},
        {"shownNotificationIDs", R"(["a", 2])", "The value is not a list of texts, as JSON: [1]: expected a string."},
        {"aiProviders", R"([{"type": "openai", "provider": {"key": "k"}}])",
         "The value is not a list of AI providers, as JSON: [0].provider.id: missing."},
        {"aiProviders", R"([{"type": "openai", "provider": {"key": "sk-secret}}])",
         "The value is not a list of AI providers, as JSON: parse error at line 1, column 54: syntax error while "
         "parsing "
         "value - invalid string: missing closing quote."},
        {"mainPrompt", "null", "The value is not a prompt, as JSON: expected an object."},
    };
    for (const auto& [key, text, expected] : cases) {
        const auto outcome = typed(key, text);
        EXPECT_TRUE(outcome.starts_with(expected)) << key << " " << text << " -> " << outcome;
    }
}

TEST_F(AnySettingTest, WhatIsShownCanBeTypedAgain)
{
    auto settings = storage();
    settings.customModelsFolderBookmark.set(Data{'/', 'm'});
    settings.lastHistoryCleanupDate.set(m_clock.now());
    settings.selectedDictationModelID.set(TranscriptionModelID(PredefinedModelID::tiny));
    settings.storedPromptID.set(Uuid::random());
    settings.promptAiProviders.set({GroqProvider{Uuid::random(), "secret", "m", AIProviderState::failing}});
    for (auto* setting : settings.settings()) {
        const auto value = setting->parse(setting->text());
        ASSERT_TRUE(value) << setting->key() << ": " << setting->text();
        EXPECT_EQ(*value, setting->json()) << setting->key();
        EXPECT_TRUE(setting->check(setting->defaultJson())) << setting->key();
        for (const auto& word : setting->words())
            EXPECT_TRUE(setting->parse(word) && setting->check(*setting->parse(word))) << setting->key() << " " << word;
    }
}

TEST_F(AnySettingTest, ResetGivesBackTheDefaultAndRemovesTheEntry)
{
    auto settings = storage();
    settings.playSound.set(false);
    bool told = false;
    const auto subscription = settings.playSound.subscribe([&](const bool& value) { told = value; });
    settings.find("playSound")->reset();
    EXPECT_TRUE(told && settings.playSound.get());
    EXPECT_EQ(chosen(), Json::object());
    std::filesystem::remove(m_file);
    storage().playSound.reset();
    EXPECT_FALSE(std::filesystem::exists(m_file)) << "there was nothing to write";
}

} // namespace
