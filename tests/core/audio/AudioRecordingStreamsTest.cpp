#include "tests/core/audio/AudioRecordingFixture.h"

#include <sys/resource.h>

#include <atomic>
#include <csignal>
#include <thread>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

using Kind = AudioRecordingFailure::Kind;
using InputKind = AudioInputError::Kind;

const AudioReadError kNoStreamingFile = AudioRecordingFailure{Kind::noStreamingFile};

AudioReadError noNewAudio(std::uint64_t size)
{
    return AudioRecordingError{AudioRecordingError::Kind::noNewAudioDataAvailable, size};
}

using AudioRecordingStreamsTest = AudioRecordingFixture;

TEST_F(AudioRecordingStreamsTest, StreamingReadersGetEveryByteOnce)
{
    EXPECT_EQ(m_manager.readNewAudio().error(), kNoStreamingFile);
    EXPECT_EQ(userMessage(kNoStreamingFile), "No streaming file URL");
    ASSERT_TRUE(start({m_id, RecordingMode::microphone, true, ""}));
    EXPECT_EQ(m_manager.lastProcessedBytes(), 44U);
    EXPECT_EQ(m_manager.readNewAudio().error(), noNewAudio(44));

    const auto samples = ramp(5'000'000); // more than one read yields
    std::string read;
    const auto readAll = [&] {
        for (auto piece = m_manager.readNewAudio(); piece; piece = m_manager.readNewAudio()) {
            EXPECT_LE(piece->size(), RecordingReader::kMaxBytes);
            read.append(piece->begin(), piece->end());
            EXPECT_EQ(m_manager.lastProcessedBytes(), 44 + read.size());
        }
    };
    microphone()->push(std::span(samples).first(100));
    readAll();
    EXPECT_EQ(read.size(), 200U);
    EXPECT_EQ(m_manager.readNewAudio().error(), noNewAudio(244));
    EXPECT_TRUE(m_log.has(", start byte: 244") && m_log.has("Read 200 bytes (from byte 44)"));
    microphone()->push(std::span(samples).subspan(100, 4'999'000));
    readAll();
    microphone()->push(std::span(samples).subspan(4'999'100));
    ASSERT_TRUE(await(m_manager.stop()));
    readAll(); // the rest, after the end
    EXPECT_EQ(samplesOf(read), samples);

    ASSERT_TRUE(start({Uuid::random()}));
    await(m_manager.cancel());
    EXPECT_EQ(m_manager.readNewAudio().error(), kNoStreamingFile);
}

/// No file may grow beyond that many bytes while it lives.
class FileSizeLimit {
public:
    explicit FileSizeLimit(::rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const ::rlimit limit{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_signal);
    }

private:
    ::rlimit m_before{};
    ::sighandler_t m_signal = std::signal(SIGXFSZ, SIG_IGN);
};

TEST_F(AudioRecordingStreamsTest, AFileThatCannotGrowEndsTheRecordingAndKeepsWhatIsThere)
{
    std::vector<Result<void, AudioInputError>> ends;
    const auto subscription = m_manager.ended.subscribe([&](const auto& reason) { ends.push_back(reason); });
    ASSERT_TRUE(start({m_id}));
    const auto samples = ramp(30000);
    {
        const FileSizeLimit limit(40001);
        for (std::size_t at = 0; at < samples.size(); at += 1000)
            microphone()->push(std::span(samples).subspan(at, 1000));
    }
    microphone()->push(samples); // room again: what comes now would not follow what is there
    microphone()->end();
    drainMainThread();
    ASSERT_EQ(ends.size(), 1U);
    EXPECT_NE(userMessage(ends[0].error()).find("What was recorded until then is kept."), std::string::npos);
    const auto recording = await(m_manager.stop());
    ASSERT_TRUE(recording);
    EXPECT_EQ(recorded(*recording), std::vector(samples.begin(), samples.begin() + (40000 - 44) / 2));
    EXPECT_EQ(recording->interruption, ends[0].error());
}

TEST_F(AudioRecordingStreamsTest, AnEndWhileASourceStillOpensIsToldAfterTheStart)
{
    std::optional<Result<void, AudioRecordingFailure>> started;
    int ends = 0;
    bool wasStarted = false;
    const auto subscription = m_manager.ended.subscribe([&](const auto&) {
        ++ends;
        wasStarted = started.has_value();
    });
    TaskScope scope;
    m_input.holdOpens();
    scope.start(storeResult(m_manager.start({m_id, RecordingMode::both, false, ""}), started));
    m_input.releaseOpens();
    m_input.holdOpens(); // the microphone opens, the system's audio does not yet
    drainMainThread();
    {
        const FileSizeLimit limit(10000);
        microphone()->push(ramp(10000));
    }
    drainMainThread();
    EXPECT_EQ(ends, 0);
    m_input.releaseOpens();
    drainMainThread();
    EXPECT_EQ(ends, 1);
    EXPECT_TRUE(wasStarted);
    EXPECT_TRUE(await(m_manager.stop()));
}

TEST_F(AudioRecordingStreamsTest, WhatACrashLeftBehindIsRecovered)
{
    auto crashed = std::make_unique<AudioRecordingManager>(m_input, m_storage, m_clock, m_recordings, m_log.logger());
    ASSERT_TRUE(await(crashed->start({m_id, RecordingMode::microphone, true, ""})));
    microphone()->push(ramp(16000));
    const auto info = m_storage.crashRecoveryInfo.get().value();
    EXPECT_EQ(await(m_manager.recover(info)).error(), RecordingRecoveryFailure::stillRecording);
    EXPECT_EQ(m_storage.crashRecoveryInfo.get(), info);
    crashed.reset(); // as after a kill: the file, the stored information, no lock

    ASSERT_TRUE(await(m_manager.recover(info)));
    EXPECT_EQ(m_storage.crashRecoveryInfo.get(), info) << "nobody has noted yet where the recording is";
    const auto recovered = await(m_manager.recover(info)); // as after another end of the program
    ASSERT_TRUE(recovered);
    EXPECT_EQ(recovered->id, m_id);
    EXPECT_DOUBLE_EQ(recovered->audioFile.duration, 1.0);
    EXPECT_EQ(filePath(recovered->audioFile.fileBookmark), file("VocalithRecovered-" + m_id.toString() + ".wav"));
    EXPECT_EQ(fileCount(), 1U);
    m_manager.forget(info);
    EXPECT_EQ(m_storage.crashRecoveryInfo.get(), std::nullopt);
    EXPECT_FALSE(m_storage.storedIsRecording.get());

    m_storage.crashRecoveryInfo.set(info);
    std::filesystem::remove(file("VocalithRecovered-" + m_id.toString() + ".wav"));
    EXPECT_EQ(await(m_manager.recover(info)).error(), RecordingRecoveryFailure::fileMissing);
    EXPECT_EQ(m_storage.crashRecoveryInfo.get(), std::nullopt);
    EXPECT_TRUE(m_log.has("Audio file does not exist."));
}

TEST_F(AudioRecordingStreamsTest, StreamsOfTheirOwnThreadsRunWhileTheMainThreadReads)
{
    for (const auto mode : {RecordingMode::microphone, RecordingMode::both}) {
        ASSERT_TRUE(start({m_id, mode, true, ""}));
        std::vector<std::thread> threads;
        std::atomic<int> running = 0;
        const auto run = [&](std::shared_ptr<FakeCapture> capture, bool fails) {
            ++running;
            threads.emplace_back([&running, capture, fails] {
                const auto piece = ramp(160);
                for (int i = 0; i < 500; ++i)
                    capture->push(piece);
                fails ? capture->fail({InputKind::deviceLost, "unplugged"}) : capture->end();
                --running;
            });
        };
        bool ended = false;
        const auto subscription = m_manager.ended.subscribe([&](const auto&) { ended = true; });
        run(microphone(), false);
        if (mode == RecordingMode::both)
            run(m_input.capture(AudioSource::systemAudio), true);
        std::size_t read = 0;
        const auto readOn = [&] {
            m_clock.advance(30ms);
            if (const auto piece = m_manager.readNewAudio())
                read += piece->size();
        };
        runUntil([&] {
            readOn();
            return ended;
        });
        for (auto& thread : threads)
            thread.join();
        const auto recording = await(m_manager.stop());
        ASSERT_TRUE(recording);
        readOn();
        EXPECT_EQ(read + 44, static_cast<std::size_t>(recording->audioFile.fileSize));
        EXPECT_GE(recording->elapsedTime, 5.0);
        fs::remove(*filePath(recording->audioFile.fileBookmark));

        // A stop in the middle: no sample may arrive in a sink that is gone.
        ASSERT_TRUE(start({m_id, mode, true, ""}));
        threads.clear();
        const auto deserted = microphone();
        run(deserted, true);
        await(m_manager.cancel());
        threads.front().join();
        EXPECT_FALSE(deserted->isAlive());
        drainMainThread();
        expectNothingLeft();
    }
}

} // namespace
