#include "core/storage/settings/file/SettingsMigration.h"

#include "tests/core/storage/settings/SettingsFixture.h"
#include "tests/support/Places.h"

using namespace vocalith;
using namespace vocalith::test;

namespace {

class SettingsMigrationTest : public SettingsFixture {
protected:
    static std::string golden(const std::string& name) { return readFile(testData() / "settings" / (name + ".json")); }
};

TEST_F(SettingsMigrationTest, BringsTheFirstLayoutToTheCurrentOneOnce)
{
    writeFile(m_file, golden("unversioned"));
    {
        const auto settings = storage();
        EXPECT_EQ(settings.settingsVersion.get(), 1);
        EXPECT_EQ(settings.selectedDictationModelID.get(), TranscriptionModelID(PredefinedModelID::largeV3));
        EXPECT_EQ(settings.aiPrompts.get().size(), 1U);
    }
    EXPECT_EQ(content(), golden("version-1"));
    writeFile(m_file, golden("version-1"));
    storage();
    EXPECT_EQ(content(), golden("version-1"));
    EXPECT_TRUE(m_log.has("Cannot decode setting: aiPresets: [1].")) << "what is no prompt is left as it is";
}

TEST_F(SettingsMigrationTest, ARecordOfAModelBecomesItsIdentity)
{
    writeFile(m_file, R"({"transcriptionModelID": {"modelId": "tiny", "modelType": "whisper"},
                          "fileTranscriptionVoiceModelID": {"modelType": "none"}})");
    const auto settings = storage();
    EXPECT_EQ(settings.selectedDictationModelID.get(), TranscriptionModelID(PredefinedModelID::tiny));
    EXPECT_FALSE(settings.selectedFileTranscriptionVoiceModelID.get());
    EXPECT_TRUE(m_log.lines().empty());
}

TEST_F(SettingsMigrationTest, ANewerLayoutIsUsedAndItsVersionKept)
{
    writeFile(m_file, R"({"settingsVersion": 7, "transcriptionModelID": "largeV3", "playSound": false})");
    auto settings = storage();
    EXPECT_FALSE(settings.playSound.get());
    EXPECT_FALSE(settings.selectedDictationModelID.get()) << "no step of ours knows what that means there";
    settings.playSound.set(true);
    EXPECT_EQ(json()["settingsVersion"], 7);
    EXPECT_EQ(json()["transcriptionModelID"], "largeV3");
}

TEST_F(SettingsMigrationTest, NonsenseIsNoObstacle)
{
    for (const auto* stored :
         {R"({"settingsVersion": "x", "aiPresets": 5, "wordReplacements": [null, 3], "mainPrompt": []})",
          R"({"settingsVersion": -3, "voiceJournalShortcut": "none", "microphonePriorityList": {"a": "b"}})",
          R"({"settingsVersion": 1e99, "mainPrompt": {"legacyBashScript": {}}, "transcriptionModelID": {}})"}) {
        auto entries = parseJson(stored).value();
        EXPECT_TRUE(migrateSettings(entries));
        EXPECT_EQ(entries["settingsVersion"], 1);
        EXPECT_FALSE(migrateSettings(entries));
    }
}

} // namespace
