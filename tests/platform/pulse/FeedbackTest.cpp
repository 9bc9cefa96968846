#include "platform/pulse/FeedbackSounds_p.h"
#include "platform/pulse/PulseAudioInput.h"
#include "platform/pulse/PulseSoundPlayer.h"
#include "platform/pulse/PulseSystemVolume.h"
#include "ports/AudioPlayer.h"
#include "tests/platform/pulse/Patience.h"
#include "tests/platform/pulse/Recording.h"
#include "tests/support/AudioServer.h"
#include "tests/support/RecordedLog.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;

namespace {

using Sound = SoundPlayer::Sound;

/// The sound without its first moments: what an output had already handed to who listens to it before a stream began
/// is not handed over again.
std::vector<std::int16_t> samplesOf(Sound sound)
{
    constexpr std::ptrdiff_t kMissed = 640;
    std::vector<std::int16_t> samples;
    for (const float sample : feedbackSound(sound))
        samples.push_back(static_cast<std::int16_t>(std::lround(sample * 32767)));
    samples.erase(samples.begin(), samples.begin() + kMissed);
    return samples;
}

/// What is heard of a dictation beside the speaker's own words, on both servers.
class FeedbackTest : public testing::TestWithParam<AudioServer::Kind> {
protected:
    bool isMuted(const std::string& sink = "speaker") const
    {
        return m_server.pactl({"get-sink-mute", sink}) == "Mute: yes";
    }
    std::string volume() const { return m_server.pactl({"get-sink-volume", "speaker"}); }
    PulseSystemVolume systemVolume() const
    {
        return PulseSystemVolume(m_note, m_log.logger(), m_server.address(), kPatient);
    }

    void TearDown() override
    {
        for (const auto& line : HasFailure() ? m_log.lines() : std::vector<std::string>())
            GTEST_LOG_(INFO) << line;
    }

    TemporaryFolder m_folder;
    std::filesystem::path m_note = m_folder / "silenced";
    RecordedLog m_log;
    AudioServer m_server{GetParam()};
};

TEST_P(FeedbackTest, TheTwoSoundsAreHeardAndToldApart)
{
    PulseAudioInput input(m_log.logger(), m_server.address(), kPatient);
    Recording heard;
    auto stream = await(input.open({AudioSource::systemAudio, {}}, heard));
    ASSERT_TRUE(stream);
    runUntil([&] { return heard.size() > 8000; }); // the output has woken up

    PulseSoundPlayer player(m_log.logger(), m_server.address(), kPatient);
    int finished = 0;
    const auto subscription = player.finished.subscribe([&](const auto& result) {
        EXPECT_TRUE(result) << result.error();
        ++finished;
    });
    for (const auto& [played, other] : {std::pair{Sound::recordingStarted, Sound::recordingEnded},
                                        std::pair{Sound::recordingEnded, Sound::recordingStarted}}) {
        double likeness = 0;
        std::vector<std::int16_t> samples;
        for (int attempt = 0; attempt < 5 && likeness < 0.9; ++attempt) { // a busy machine may break off
            const auto from = heard.size();
            finished = 0;
            ASSERT_TRUE(player.play(played));
            runUntil([&] { return finished == 1; });
            const auto end = heard.size() + kAudioSampleRate / 2; // what was played may still be on its way
            runUntil([&] { return heard.size() >= end; });
            samples = heard.samples(from);
            likeness = correlation(samplesOf(played), samples);
        }
        EXPECT_GT(likeness, 0.9);
        EXPECT_LT(correlation(samplesOf(other), samples), 0.6);
    }

    finished = 0;
    ASSERT_TRUE(player.play(Sound::recordingStarted));
    player.stop();
    ASSERT_TRUE(player.play(Sound::recordingEnded));
    runUntil([&] { return finished > 0; });
    drainMainThread();
    EXPECT_EQ(finished, 1) << "a sound that was stopped has no end";
    stream->reset();
}

TEST_P(FeedbackTest, TheOutputIsSilencedAndGivenBackExactly)
{
    m_server.pactl({"set-sink-volume", "speaker", "37%"});
    const auto before = volume();
    auto system = systemVolume();
    system.mute();
    EXPECT_TRUE(runUntil([&] { return isMuted(); }));
    EXPECT_EQ(readFile(m_note), "speaker") << "a program that is killed now leaves a silent machine";
    m_server.addSink("headset");
    m_server.setDefaultSink("headset");
    system.restore();
    EXPECT_TRUE(runUntil([&] { return !isMuted() && !std::filesystem::exists(m_note); }));
    EXPECT_FALSE(isMuted("headset"));
    EXPECT_EQ(volume(), before);
    m_server.setDefaultSink("speaker");

    for (int round = 0; round < 5; ++round) { // a key that is hardly touched
        system.mute();
        runUntil([&] { return std::filesystem::exists(m_note); });
        system.restore();
        runUntil([&] { return !std::filesystem::exists(m_note); });
        EXPECT_TRUE(runUntil([&] { return !isMuted(); }));
    }
    for (int round = 0; round < 20; ++round) { // a key that bounces
        system.mute();
        system.restore();
    }
    system.mute();
    EXPECT_TRUE(runUntil([&] { return isMuted(); }));
    system.restore();
    EXPECT_TRUE(runUntil([&] { return !isMuted(); }));
}

TEST_P(FeedbackTest, SilenceOfTheUsersOwnStays)
{
    m_server.pactl({"set-sink-mute", "speaker", "1"});
    auto system = systemVolume();
    system.mute();
    system.restore();
    PulseSystemVolume other(m_folder / "other", m_log.logger(), m_server.address(), kPatient);
    m_server.addSink("headset");
    m_server.setDefaultSink("headset");
    other.mute(); // comes after what the first one asked
    runUntil([&] { return isMuted("headset"); });
    EXPECT_TRUE(isMuted());
    EXPECT_FALSE(std::filesystem::exists(m_note));
}

TEST_P(FeedbackTest, TheEndOfTheProgramGivesTheOutputBack)
{
    {
        auto system = systemVolume();
        system.mute();
        EXPECT_TRUE(runUntil([&] { return isMuted(); }));
    }
    EXPECT_FALSE(std::filesystem::exists(m_note));
    runUntil([&] { return !isMuted(); }); // PipeWire tells each of its clients in its own time

    m_server.pactl({"set-sink-mute", "speaker", "1"});
    writeFile(m_note, "speaker"); // as a program leaves it that was killed
    const auto next = systemVolume();
    EXPECT_TRUE(runUntil([&] { return !isMuted() && !std::filesystem::exists(m_note); }));
}

INSTANTIATE_TEST_SUITE_P(Servers, FeedbackTest,
                         testing::Values(AudioServer::Kind::pulseAudio, AudioServer::Kind::pipeWire),
                         [](const auto& server) {
                             return server.param == AudioServer::Kind::pulseAudio ? "PulseAudio" : "PipeWire";
                         });

TEST(FeedbackWithoutServerTest, IsToldAndDoesNotWait)
{
    const RecordedLog log;
    const TemporaryFolder folder;
    const auto nowhere = "unix:" + (folder / "nothing").string();
    PulseSoundPlayer player(log.logger(), nowhere, kPatient);
    std::string error;
    const auto subscription = player.finished.subscribe([&](const auto& result) {
        if (!result)
            error = result.error();
    });
    ASSERT_TRUE(player.play(Sound::recordingEnded));
    PulseSystemVolume system(folder / "note", log.logger(), nowhere, kPatient);
    system.mute();
    system.restore();
    runUntil([&] { return !error.empty(); });
    EXPECT_EQ(error, userMessage(AudioPlayerError{AudioPlayerError::Kind::noServer}));
}

} // namespace
