#include "platform/media/MediaFileAudioInput.h"
#include "platform/media/FFmpegPCMConverter.h"
#include "tests/platform/media/Sound.h"
#include "tests/support/FakePCMConverter.h"
#include "tests/support/MainLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

using namespace vocalith;
using namespace vocalith::test;

namespace {

using Kind = AudioInputError::Kind;

class Listener final : public AudioInputListener {
public:
    void samplesArrived(std::span<const std::int16_t> samples) override
    {
        const std::lock_guard lock(m_mutex);
        m_samples.insert(m_samples.end(), samples.begin(), samples.end());
        m_largestPiece = std::max(m_largestPiece, samples.size());
        m_onMainThread = m_onMainThread || std::this_thread::get_id() == m_mainThread;
        pieces.fetch_add(1);
    }
    void streamEnded(Result<void, AudioInputError> reason) override
    {
        const std::lock_guard lock(m_mutex);
        m_reason = std::move(reason);
        ends.fetch_add(1);
    }

    std::vector<std::int16_t> samples() const { return locked(m_samples); }
    std::size_t largestPiece() const { return locked(m_largestPiece); }
    bool wasOnMainThread() const { return locked(m_onMainThread); }
    Result<void, AudioInputError> reason() const { return locked(m_reason); }

    std::atomic<int> pieces = 0;
    std::atomic<int> ends = 0;

private:
    template <class T>
    T locked(const T& value) const
    {
        const std::lock_guard lock(m_mutex);
        return value;
    }

    mutable std::mutex m_mutex;
    std::thread::id m_mainThread = std::this_thread::get_id();
    std::vector<std::int16_t> m_samples;
    std::size_t m_largestPiece = 0;
    bool m_onMainThread = false;
    Result<void, AudioInputError> m_reason = failure(AudioInputError{});
};

TEST(MediaFileAudioInput, DeliversTheWholeFileAndEnds)
{
    const TemporaryFolder folder;
    std::vector<double> ramp;
    std::vector<std::int16_t> expected;
    for (int value = -32768; value <= 32767; value += 3) {
        ramp.push_back(value / 32768.0);
        expected.push_back(static_cast<std::int16_t>(value));
    }
    writeFile(folder / "take.wav", wavOf({.rate = kAudioSampleRate}, ramp));
    const FFmpegPCMConverter converter;
    MediaFileAudioInput input(converter, folder / "take.wav");

    const auto devices = await(input.microphones()).value();
    ASSERT_EQ(devices.size(), 1u);
    EXPECT_EQ(devices[0].name, "take.wav");
    EXPECT_TRUE(devices[0].isDefault);

    Listener listener;
    const auto stream = await(input.open({.deviceId = "a microphone of the settings"}, listener));
    ASSERT_TRUE(stream);
    ASSERT_TRUE(runUntil([&] { return listener.ends == 1; }));
    EXPECT_TRUE(listener.reason());
    EXPECT_EQ(listener.samples(), expected);
    EXPECT_LE(listener.largestPiece(), 1600u);
    EXPECT_FALSE(listener.wasOnMainThread());
}

TEST(MediaFileAudioInput, SaysAtOnceWhatCannotBeOpened)
{
    const TemporaryFolder folder;
    writeFile(folder / "text.wav", "no sound");
    const FFmpegPCMConverter converter;
    Listener listener;
    for (const char* name : {"missing.wav", "text.wav"}) {
        MediaFileAudioInput input(converter, folder / name);
        const auto error = await(input.open({}, listener)).error();
        EXPECT_EQ(error.kind, Kind::sourceUnreadable);
        EXPECT_EQ(userMessage(error), userMessage(converter.examine(folder / name).error()));
        EXPECT_EQ(await(input.open({.source = AudioSource::systemAudio, .deviceId = {}}, listener)).error().kind,
                  Kind::unsupported);
    }
    EXPECT_EQ(listener.pieces + listener.ends, 0);
}

TEST(MediaFileAudioInput, DamageThatOnlyDecodingShowsEndsTheStreamWithAnError)
{
    FakePCMConverter converter;
    converter.failAfter = 8000;
    MediaFileAudioInput input(converter, "/a/broken.mp3");
    Listener listener;
    const auto stream = await(input.open({}, listener));
    ASSERT_TRUE(stream);
    ASSERT_TRUE(runUntil([&] { return listener.ends == 1; }));
    EXPECT_EQ(listener.samples().size(), 8000u) << "what arrived before is good";
    EXPECT_EQ(listener.reason().error().kind, Kind::sourceUnreadable);
    EXPECT_NE(listener.reason().error().detail.find("/a/broken.mp3"), std::string::npos);
}

TEST(MediaFileAudioInput, DestroyingAStreamEndsItInTheMiddle)
{
    const TemporaryFolder folder;
    constexpr std::uint32_t kSeconds = 200'000;
    const WavForm form{.rate = 8000, .bits = 8};
    writeFile(folder / "days.wav", wavHeader(form, kSeconds * 8000));
    std::filesystem::resize_file(folder / "days.wav", 44 + kSeconds * 8000);
    const FFmpegPCMConverter converter;
    MediaFileAudioInput input(converter, folder / "days.wav");
    Listener listener;
    auto stream = await(input.open({}, listener));
    ASSERT_TRUE(stream);
    ASSERT_TRUE(runUntil([&] { return listener.pieces > 0; }));
    stream->reset();
    const auto pieces = static_cast<std::uint32_t>(listener.pieces);
    EXPECT_LT(pieces, kSeconds) << "much of the file was delivered first";
    EXPECT_EQ(listener.ends, 0);
}

TEST(MediaFileAudioInput, ARequestThatIsCancelledYieldsNoStream)
{
    FakePCMConverter converter;
    MediaFileAudioInput input(converter, "/a/b.wav");
    Listener listener;
    TaskScope scope;
    std::optional<Result<std::unique_ptr<AudioInputStream>, AudioInputError>> result;
    scope.start(storeResult(input.open({}, listener), result));
    scope.requestStop();
    ASSERT_TRUE(runUntil([&] { return scope.isEmpty(); }));
    EXPECT_EQ(result.value().error().kind, Kind::failed);
    EXPECT_EQ(listener.pieces, 0);
}

} // namespace
