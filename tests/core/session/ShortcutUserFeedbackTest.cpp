#include "core/session/ShortcutUserFeedbackService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "ports/SoundPlayer.h"
#include "ports/SystemVolume.h"
#include "tests/support/FakeClock.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using testing::ElementsAreArray;

namespace {

/// The loudspeaker: what it is told, in order.
class RecordedSpeaker final : public SoundPlayer, public SystemVolume {
public:
    Result<void, std::string> play(Sound sound) override
    {
        heard.emplace_back(sound == Sound::recordingStarted ? "start" : "end");
        if (isBroken)
            return failure(std::string("no output"));
        return {};
    }
    void stop() override { heard.emplace_back("stop"); }
    void mute() override { heard.emplace_back("mute"); }
    void restore() override { heard.emplace_back("restore"); }

    std::vector<std::string> heard;
    bool isBroken = false;
};

struct Case {
    std::string name;
    bool playSound;
    bool mute;
    RecordingMode mode;
    std::string happens; ///< s: the recording starts, f: a sound has been heard, e: ends, x: ends too short
    std::vector<std::string> heard;
};

class ShortcutUserFeedbackTest : public testing::TestWithParam<Case> {};

TEST_P(ShortcutUserFeedbackTest, KeepsTheOrder)
{
    const auto& row = GetParam();
    const TemporaryFolder folder;
    const FakeClock clock;
    const RecordedLog log;
    PersistentAppStorage storage(folder / "settings.json", clock, Logger());
    storage.playSound.set(row.playSound);
    storage.muteWhileRecording.set(row.mute);
    RecordedSpeaker speaker;
    ShortcutUserFeedbackService service(speaker, speaker, storage, log.logger());
    for (const char event : row.happens) {
        if (event == 's')
            service.recordingStarted(row.mode);
        else if (event == 'f')
            speaker.finished.emit({});
        else
            service.recordingEnded(event == 'e');
    }
    EXPECT_THAT(speaker.heard, ElementsAreArray(row.heard));
}

constexpr auto kMicrophone = RecordingMode::microphone;

INSTANTIATE_TEST_SUITE_P(
    All, ShortcutUserFeedbackTest,
    testing::Values(
        Case{"TheEndIsHeardAfterTheVolumeIsBack", true, true, kMicrophone, "sfef", {"start", "mute", "restore", "end"}},
        Case{"ALateEndOfTheSoundMutesNothingAnyMore", true, true, kMicrophone, "sef", {"start", "restore", "end"}},
        Case{"TooShortIsSilent", true, true, kMicrophone, "sfx", {"start", "mute", "restore", "stop"}},
        Case{"WithoutSounds", false, true, kMicrophone, "se", {"mute", "restore", "stop"}},
        Case{"WithoutMuting", true, false, kMicrophone, "sfef", {"start", "restore", "end"}},
        Case{"WhatIsRecordedIsNotMuted", true, true, RecordingMode::both, "sfe", {"start", "restore", "end"}},
        Case{
            "TheVolumeIsHandedBackOnce", true, true, kMicrophone, "sfxe", {"start", "mute", "restore", "stop", "end"}}),
    [](const auto& row) { return row.param.name; });

TEST(ShortcutUserFeedbackFailureTest, ASoundThatCannotBeHeardChangesNothingElse)
{
    const TemporaryFolder folder;
    const FakeClock clock;
    const RecordedLog log;
    PersistentAppStorage storage(folder / "settings.json", clock, Logger());
    storage.muteWhileRecording.set(true);
    RecordedSpeaker speaker;
    ShortcutUserFeedbackService service(speaker, speaker, storage, log.logger());
    speaker.isBroken = true;
    service.recordingStarted(kMicrophone);
    EXPECT_THAT(speaker.heard, ElementsAreArray({"start", "mute"}));
    speaker.isBroken = false;
    service.recordingEnded(true);
    speaker.finished.emit(failure(std::string("it went away")));
    EXPECT_TRUE(log.has("🔊 Could not play boop sound: no output"));
    EXPECT_TRUE(log.has("🔊 Could not play boop sound: it went away"));
}

} // namespace
