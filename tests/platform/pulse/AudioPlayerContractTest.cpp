#include "platform/pulse/PulseAudioInput.h"
#include "platform/pulse/PulseAudioPlayer.h"
#include "tests/platform/pulse/Patience.h"
#include "tests/platform/pulse/Recording.h"
#include "tests/support/AudioServer.h"
#include "tests/support/FakeAudioPlayer.h"
#include "tests/support/FakePCMConverter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;

namespace {

using Kind = AudioPlayerError::Kind;
using Outcome = Result<double, AudioPlayerError>;

const std::filesystem::path kSound = "/recordings/sound.wav"; // of 1.5 seconds
const std::filesystem::path kLong = "/recordings/long.wav";
const std::filesystem::path kBroken = "/recordings/broken.wav";

/// Decodes the sounds above without any file.
class Sounds final : public PCMConverter {
public:
    Sounds() { m_finite.samplesOf = {{kSound, std::vector<float>(24000, 0.25F)}}; }

    /// Samples of kLong that were taken.
    std::int64_t decoded() const { return m_decoded; }
    bool isDecoding() const { return m_isDecoding; }

    Result<std::int64_t, ConversionError> convert(const std::filesystem::path& file, const SampleSink& sink,
                                                  const ProgressHandler& progress, const StopToken& stop) const override
    {
        if (file == kBroken)
            return failure(ConversionError{ConversionError::Kind::damaged, file});
        if (file != kLong)
            return m_finite.convert(file, sink, progress, stop);
        const std::vector<float> piece(1600, 0.25F);
        m_isDecoding = true;
        while (sink(piece))
            m_decoded += static_cast<std::int64_t>(piece.size());
        m_isDecoding = false;
        return m_decoded.load();
    }
    Result<MediaInfo, ConversionError> examine(const std::filesystem::path& file) const override
    {
        return m_finite.examine(file);
    }
    Result<double, ConversionError> extractAudio(const std::filesystem::path& file, const std::filesystem::path& wav,
                                                 const ProgressHandler& progress, const StopToken& stop) const override
    {
        return m_finite.extractAudio(file, wav, progress, stop);
    }
    Result<std::filesystem::path, ConversionError> compressForUpload(const std::filesystem::path& recording,
                                                                     AudioUploadCompression compression,
                                                                     const std::filesystem::path& folder,
                                                                     const StopToken& stop) const override
    {
        return m_finite.compressForUpload(recording, compression, folder, stop);
    }

private:
    FakePCMConverter m_finite;
    mutable std::atomic<std::int64_t> m_decoded = 0;
    mutable std::atomic<bool> m_isDecoding = false;
};

/// A machine that can play, and one whose audio server does not run.
class Machine {
public:
    virtual ~Machine() = default;
    virtual AudioPlayer& player() = 0;
    virtual AudioPlayer& withoutServer() = 0;
};

class FakeMachine final : public Machine {
public:
    FakeMachine()
    {
        m_player.durations = {{kSound, 1.5}};
        m_serverless.error = AudioPlayerError{Kind::noServer, "nobody there"};
    }
    AudioPlayer& player() override { return m_player; }
    AudioPlayer& withoutServer() override { return m_serverless; }

private:
    FakeAudioPlayer m_player;
    FakeAudioPlayer m_serverless;
};

class ServerMachine final : public Machine {
public:
    explicit ServerMachine(AudioServer::Kind kind)
        : m_server(kind), m_player(m_sounds, {}, m_server.address(), kPatient),
          m_serverless(m_sounds, {}, "unix:/nonexistent/pulse/native", kPatient)
    {}
    AudioPlayer& player() override { return m_player; }
    AudioPlayer& withoutServer() override { return m_serverless; }

private:
    Sounds m_sounds;
    AudioServer m_server;
    PulseAudioPlayer m_player;
    PulseAudioPlayer m_serverless;
};

using MakeMachine = std::unique_ptr<Machine> (*)();
class AudioPlayerContract : public testing::TestWithParam<MakeMachine> {
protected:
    const std::unique_ptr<Machine> machine = GetParam()();
};

TEST_P(AudioPlayerContract, PlaysToTheEndAndTellsHowFarItIs)
{
    std::vector<double> positions;
    for (int run = 0; run < 2; ++run) { // a player can be used again
        positions.clear();
        auto note = [&](double seconds) { positions.push_back(seconds); };
        const auto played = await(machine->player().play(kSound, note));
        ASSERT_TRUE(played) << played.error().detail;
        EXPECT_NEAR(*played, 1.5, 0.01);
        ASSERT_FALSE(positions.empty());
        EXPECT_TRUE(std::ranges::is_sorted(positions));
        EXPECT_GT(positions.front(), 0);
        EXPECT_LE(positions.back(), 1.5);
    }
}

TEST_P(AudioPlayerContract, SaysWhatIsWrongWithAFile)
{
    const auto played = await(machine->player().play(kBroken, {}));
    ASSERT_FALSE(played);
    EXPECT_EQ(played.error().kind, Kind::sourceUnreadable);
    EXPECT_NE(userMessage(played.error()).find(kBroken.string()), std::string::npos) << played.error().detail;
}

TEST_P(AudioPlayerContract, SaysThatNoServerRuns)
{
    const auto played = await(machine->withoutServer().play(kSound, {}));
    ASSERT_FALSE(played);
    EXPECT_EQ(played.error().kind, Kind::noServer);
}

template <AudioServer::Kind kind>
std::unique_ptr<Machine> makeServerMachine()
{
    return std::make_unique<ServerMachine>(kind);
}

constexpr std::array kNames = {"Fake", "PulseAudio", "PipeWire"};

INSTANTIATE_TEST_SUITE_P(Players, AudioPlayerContract,
                         testing::Values([]() -> std::unique_ptr<Machine> { return std::make_unique<FakeMachine>(); },
                                         &makeServerMachine<AudioServer::Kind::pulseAudio>,
                                         &makeServerMachine<AudioServer::Kind::pipeWire>),
                         [](const auto& instance) { return kNames.at(instance.index); });

class PulseAudioPlayerTest : public testing::Test {
protected:
    /// Plays until `condition` holds, then does something to it, and waits for the end.
    template <class Condition, class Action>
    Outcome playUntil(PulseAudioPlayer& player, const std::filesystem::path& file, Condition condition, Action action)
    {
        std::optional<Outcome> outcome;
        scope.start(storeResult(player.play(file, [this](double seconds) { position = seconds; }), outcome));
        runUntil(condition);
        action();
        runUntil([&] { return outcome.has_value(); });
        return outcome.value_or(failure(AudioPlayerError{}));
    }

    Sounds sounds;
    AudioServer server{AudioServer::Kind::pulseAudio};
    TaskScope scope;
    double position = 0;
};

TEST_F(PulseAudioPlayerTest, WhatIsPlayedIsWhatIsHeard)
{
    const auto spoken = speechBand(16000 * 2);
    FakePCMConverter converter;
    converter.samples.resize(spoken.size());
    std::ranges::transform(spoken, converter.samples.begin(),
                           [](std::int16_t sample) { return static_cast<float>(sample) / 32768.0F; });
    PulseAudioInput input({}, server.address(), kPatient);
    Recording heard;
    const auto listening = await(input.open({AudioSource::systemAudio, {}}, heard));
    ASSERT_TRUE(listening);
    PulseAudioPlayer player(converter, {}, server.address(), kPatient);
    const std::vector<std::int16_t> middle(spoken.begin() + 8000, spoken.begin() + 24000);
    double likeness = 0;
    for (int attempt = 0; attempt < 5 && likeness < 0.9; ++attempt) { // a busy machine may break off
        const auto from = heard.size();
        ASSERT_TRUE(await(player.play(kSound, {})));
        const auto end = heard.size() + kAudioSampleRate / 2; // what was played may still be on its way
        runUntil([&] { return heard.size() >= end; });
        likeness = correlation(middle, heard.samples(from));
    }
    EXPECT_GT(likeness, 0.9);
}

TEST_F(PulseAudioPlayerTest, ALongRecordingIsDecodedOnlyAsItIsPlayedAndStopsAtOnce)
{
    PulseAudioPlayer player(sounds, {}, server.address(), kPatient);
    const auto outcome = playUntil(
        player, kLong, [&] { return position > 1; }, [&] { scope.requestStop(); });
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.error().kind, Kind::cancelled);
    EXPECT_LT(static_cast<double>(sounds.decoded()) / 16000, position + 60)
        << "it was decoded without regard to the playing";
    runUntil([&] { return !sounds.isDecoding(); });
    runUntil([&] { return server.pactl({"list", "short", "sink-inputs"}).empty(); });
}

TEST_F(PulseAudioPlayerTest, AServerThatStopsIsNoticed)
{
    auto times = kPatient;
    times.stall = 500ms;
    PulseAudioPlayer player(sounds, {}, server.address(), times);
    const auto frozen = playUntil(
        player, kLong, [&] { return position > 0; }, [&] { server.freeze(); });
    ASSERT_FALSE(frozen);
    EXPECT_EQ(frozen.error().kind, Kind::serverLost);
    server.thaw();
    position = 0;
    const auto killed = playUntil(
        player, kLong, [&] { return position > 0; }, [&] { server.kill(); });
    ASSERT_FALSE(killed);
    EXPECT_EQ(killed.error().kind, Kind::serverLost);
}

} // namespace
