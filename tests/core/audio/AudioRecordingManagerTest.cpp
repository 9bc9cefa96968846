#include "tests/core/audio/AudioRecordingFixture.h"

#include <sys/stat.h>

#include <cmath>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

using Kind = AudioRecordingFailure::Kind;
using Started = std::optional<Result<void, AudioRecordingFailure>>;
using InputKind = AudioInputError::Kind;

const AudioReadError kNoStreamingFile = AudioRecordingFailure{Kind::noStreamingFile};

using AudioRecordingManagerTest = AudioRecordingFixture;

TEST_F(AudioRecordingManagerTest, RecordsFromTheFirstSampleToTheLast)
{
    ASSERT_TRUE(start({m_id, RecordingMode::microphone, false, "fake.microphone"}));
    EXPECT_EQ(m_input.requests().back(), (AudioInputRequest{AudioSource::microphone, "fake.microphone"}));
    const auto path = file(m_id.toString() + ".wav");
    EXPECT_EQ(m_storage.crashRecoveryInfo.get(), (AudioCrashRecoveryInfo{path.string(), 44}));
    EXPECT_TRUE(m_storage.storedIsRecording.get());
    struct ::stat status {};
    ::stat(m_recordings.c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);

    const auto samples = ramp(24000);
    microphone()->push(samples);
    m_clock.advance(1700ms);
    const auto recording = await(m_manager.stop());
    ASSERT_TRUE(recording);
    EXPECT_EQ(recording->id, m_id);
    EXPECT_DOUBLE_EQ(recording->elapsedTime, 1.5);
    EXPECT_DOUBLE_EQ(recording->audioFile.duration, 1.5);
    EXPECT_EQ(recording->audioFile.fileSize, 48044);
    EXPECT_EQ(filePath(recording->audioFile.fileBookmark), path);
    EXPECT_EQ(recording->interruption, std::nullopt);
    EXPECT_EQ(recorded(*recording), samples);
    EXPECT_TRUE(m_log.has(", elapsedTime: 1.700, rawDuration: 1.500, finalDuration: 1.500"));
    EXPECT_TRUE(m_log.has("ACTIVE, "));
    EXPECT_TRUE(m_storage.crashRecoveryInfo.get()) << "its words are not delivered yet";
    m_manager.settle();
    fs::remove(path);
    expectNothingLeft();
}

TEST_F(AudioRecordingManagerTest, NamesFilesByTheirPurpose)
{
    struct Case {
        RecordingMode mode;
        bool streaming, forKeyboardExtension;
        const char* prefix;
    };
    for (const auto& [mode, streaming, forKeyboardExtension, prefix] :
         {Case{RecordingMode::both, false, false, ""}, Case{RecordingMode::microphone, true, false, "Vocalith-Stream-"},
          Case{RecordingMode::systemAudio, false, false, "Vocalith-SystemAudio-"},
          Case{RecordingMode::microphone, true, true, "Vocalith-KeyboardExtension-"}}) {
        const RecordingRequest request{m_id, mode, streaming, "", forKeyboardExtension};
        ASSERT_TRUE(start(request));
        EXPECT_TRUE(fs::exists(file(prefix + m_id.toString() + ".wav"))) << prefix;
        EXPECT_EQ(m_manager.recordingMode.get(), mode);
        EXPECT_EQ(m_manager.keyboardExtensionSessionState.get(),
                  forKeyboardExtension ? KeyboardSessionState::active : KeyboardSessionState::inactive);
        await(m_manager.cancel());
        EXPECT_EQ(m_manager.keyboardExtensionSessionState.get(), KeyboardSessionState::inactive);
        expectNothingLeft();
    }
}

TEST_F(AudioRecordingManagerTest, AFailedStartLeavesNothing)
{
    struct Case {
        RecordingMode mode;
        AudioSource failing;
        InputKind error;
        Kind kind;
        std::string message;
    };
    const Case cases[] = {
        {RecordingMode::systemAudio, AudioSource::systemAudio, InputKind::unsupported, Kind::systemAudioUnsupported,
         "System audio recording requires macOS 15.0 or newer"},
        {RecordingMode::both, AudioSource::systemAudio, InputKind::unsupported, Kind::systemAudioUnsupported,
         "System audio recording requires macOS 15.0 or newer"},
        {RecordingMode::both, AudioSource::microphone, InputKind::noDevice, Kind::input,
         userMessage(AudioInputError{InputKind::noDevice, "detail"})},
        {RecordingMode::microphone, AudioSource::microphone, InputKind::noServer, Kind::input,
         userMessage(AudioInputError{InputKind::noServer, ""})},
    };
    for (const auto& [mode, failing, error, kind, message] : cases) {
        m_input.setOpenError(failing, AudioInputError{error, "detail"});
        const auto started = start({m_id, mode, true, ""});
        ASSERT_FALSE(started);
        EXPECT_EQ(started.error().kind, kind);
        EXPECT_EQ(userMessage(started.error()), message);
        EXPECT_EQ(m_manager.readNewAudio().error(), kNoStreamingFile);
        expectNothingLeft();
        m_input.setOpenError(failing, std::nullopt);
    }
    writeFile(m_folder / "file", "");
    AudioRecordingManager homeless(m_input, m_storage, m_clock, m_folder / "file" / "VocalithRecordings",
                                   m_log.logger());
    const auto started = await(homeless.start({m_id}));
    ASSERT_FALSE(started);
    EXPECT_EQ(userMessage(started.error()), "Failed to create audio recorder");
}

TEST_F(AudioRecordingManagerTest, StoppingWithoutARecordingOrAudioSaysWhich)
{
    const auto stopFails = [this](Kind kind, std::string_view message) {
        const auto stopped = await(m_manager.stop());
        ASSERT_FALSE(stopped);
        EXPECT_EQ(stopped.error().kind, kind);
        EXPECT_EQ(userMessage(stopped.error()), message);
        expectNothingLeft();
    };
    stopFails(Kind::noFile, "Audio URL was not specified.");

    ASSERT_TRUE(start({m_id}));
    EXPECT_EQ(start({Uuid::random()}).error().kind, Kind::alreadyRecording);
    EXPECT_EQ(fileCount(), 1U);
    stopFails(Kind::emptyFile, "Empty audio file.");

    ASSERT_TRUE(start({m_id}));
    microphone()->push(ramp(100));
    fs::remove(file(m_id.toString() + ".wav"));
    stopFails(Kind::fileMissing, "Audio file does not exist.");

    ASSERT_TRUE(start({m_id}));
    microphone()->fail({InputKind::deviceLost, "gone"});
    stopFails(Kind::input, userMessage(AudioInputError{InputKind::deviceLost, ""}));
}

TEST_F(AudioRecordingManagerTest, TheInputsOwnEndIsToldOnceAndKeepsTheAudio)
{
    struct Case {
        RecordingMode mode;
        std::optional<AudioInputError> error;
    };
    for (const auto& [mode, error] :
         {Case{RecordingMode::microphone, std::nullopt},
          Case{RecordingMode::microphone, AudioInputError{InputKind::deviceLost, "unplugged"}},
          Case{RecordingMode::systemAudio, AudioInputError{InputKind::serverLost, "gone"}},
          Case{RecordingMode::both, AudioInputError{InputKind::serverLost, "gone"}}}) {
        std::vector<Result<void, AudioInputError>> ends;
        const auto subscription = m_manager.ended.subscribe([&](const auto& reason) { ends.push_back(reason); });
        const auto known = m_input.captures().size();
        ASSERT_TRUE(start({m_id, mode, false, ""}));
        const std::vector captures(m_input.captures().begin() + static_cast<std::ptrdiff_t>(known),
                                   m_input.captures().end());
        for (const auto& capture : captures) {
            drainMainThread();
            EXPECT_TRUE(ends.empty()) << "ended although a source still runs";
            capture->push(ramp(16000));
            error ? capture->fail(*error) : capture->end();
        }
        EXPECT_TRUE(ends.empty()) << "told on the stream's thread";
        drainMainThread();
        ASSERT_EQ(ends.size(), 1U);
        EXPECT_EQ(ends[0].has_value(), !error);
        EXPECT_EQ(m_clock.pendingTimers(), 0U);
        const auto recording = await(m_manager.stop());
        drainMainThread();
        ASSERT_TRUE(recording);
        EXPECT_EQ(recording->interruption, error);
        EXPECT_GE(recording->elapsedTime, 1.0);
        EXPECT_EQ(ends.size(), 1U);
        fs::remove(*filePath(recording->audioFile.fileBookmark));
    }
}

TEST_F(AudioRecordingManagerTest, InBothModeOneLostSourceLeavesTheOther)
{
    ASSERT_TRUE(start({m_id, RecordingMode::both, false, ""}));
    const auto system = m_input.capture(AudioSource::systemAudio);
    for (int i = 0; i < 50; ++i) {
        microphone()->push(std::vector<std::int16_t>(320, 1000));
        system->push(std::vector<std::int16_t>(320, 2000));
    }
    microphone()->fail({InputKind::deviceLost, "unplugged"});
    for (int i = 0; i < 50; ++i)
        system->push(std::vector<std::int16_t>(320, 2000));
    const auto recording = await(m_manager.stop());
    ASSERT_TRUE(recording);
    EXPECT_EQ(recording->interruption->kind, InputKind::deviceLost);
    const auto samples = recorded(*recording);
    ASSERT_NEAR(static_cast<double>(samples.size()), 32000, 330);
    EXPECT_NEAR(samples[8000], 3000, 1);
    EXPECT_NEAR(samples[24000], 2000, 1);
}

TEST_F(AudioRecordingManagerTest, NothingIsLostWhileTheSecondSourceOpens)
{
    Started started;
    TaskScope scope;
    m_input.holdOpens();
    scope.start(storeResult(m_manager.start({m_id, RecordingMode::both, false, ""}), started));
    m_input.releaseOpens();
    m_input.holdOpens(); // the microphone opens, the system's audio does not yet
    drainMainThread();
    ASSERT_TRUE(microphone());
    EXPECT_FALSE(started);
    const auto samples = ramp(16000);
    microphone()->push(samples);
    m_input.releaseOpens();
    drainMainThread();
    ASSERT_TRUE(started && *started);
    const auto recording = await(m_manager.stop());
    ASSERT_TRUE(recording);
    EXPECT_EQ(recorded(*recording), samples);
}

TEST_F(AudioRecordingManagerTest, StopCancelAndAStoppedTaskWhileTheSourceOpens)
{
    enum class How { stop, cancel, taskStopped };
    for (const auto how : {How::stop, How::cancel, How::taskStopped}) {
        Started started;
        std::optional<Result<FinishedRecording, AudioRecordingFailure>> stopped;
        TaskScope starting, ending;
        m_input.holdOpens();
        starting.start(storeResult(m_manager.start({m_id}), started));
        drainMainThread();
        if (how == How::stop)
            ending.start(storeResult(m_manager.stop(), stopped));
        else if (how == How::cancel)
            ending.start(m_manager.cancel());
        else
            starting.requestStop();
        drainMainThread();
        EXPECT_TRUE(how == How::taskStopped || m_manager.isRecording());
        m_input.releaseOpens();
        drainMainThread();
        EXPECT_TRUE(starting.isEmpty() && ending.isEmpty());
        ASSERT_TRUE(started);
        EXPECT_EQ(started->has_value(), how == How::stop);
        if (!*started) {
            EXPECT_EQ(started->error().kind, Kind::cancelled);
        }
        if (stopped) {
            EXPECT_EQ(stopped->error().kind, Kind::emptyFile);
        }
        expectNothingLeft();
    }
}

TEST_F(AudioRecordingManagerTest, LevelsAndTimeArePublishedOnlyWhileRecording)
{
    ASSERT_TRUE(start({m_id}));
    EXPECT_EQ(m_clock.pendingTimers(), 2U);
    std::vector<std::int16_t> tone(480);
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] = static_cast<std::int16_t>(std::lround(3276.7 * std::sin(static_cast<double>(i) * 0.1571)));
    microphone()->push(tone);
    m_clock.advance(29ms);
    EXPECT_EQ(m_manager.audioLevel.get(), 0);
    m_clock.advance(1ms);
    EXPECT_NEAR(m_manager.audioLevel.get(), 0.64, 0.01); // -23 dB
    EXPECT_EQ(m_manager.visualAudioLevels.get().back(), m_manager.audioLevel.get());
    EXPECT_NEAR(m_manager.rawAudioPowerLevels().back(), -23, 0.1);
    m_clock.advance(960ms);
    EXPECT_EQ(m_manager.rawAudioPowerLevels().size(), 33U);
    EXPECT_EQ(m_manager.elapsedTime.get(), 0);
    m_clock.advance(2010ms);
    EXPECT_DOUBLE_EQ(m_manager.elapsedTime.get(), 3.0);

    // An observer may end the recording from within the tick.
    TaskScope scope;
    const auto subscription = m_manager.audioLevel.subscribe([&](float level) {
        if (level > 0.5F)
            scope.start(m_manager.cancel());
    });
    microphone()->push(tone);
    m_clock.advance(5s);
    EXPECT_EQ(m_manager.audioLevel.get(), 0);
    EXPECT_EQ(m_manager.visualAudioLevels.get(), std::vector<float>(AudioLevelMeter::kVisualLevels));
    expectNothingLeft();
}

} // namespace
