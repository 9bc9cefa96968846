#include "platform/pulse/PulseAudioInput.h"
#include "tests/platform/pulse/Patience.h"
#include "tests/platform/pulse/Recording.h"
#include "tests/support/AudioServer.h"
#include "tests/support/FakeAudioInput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;

namespace {

using Kind = AudioInputError::Kind;
using Stream = std::unique_ptr<AudioInputStream>;

/// A machine with the microphones "second" and "first", of which "first" is the default, and a loudspeaker.
class Machine {
public:
    virtual ~Machine() = default;
    virtual AudioInput& input() = 0;
    /// A way to a machine whose audio server does not run.
    virtual AudioInput& withoutServer() = 0;
    /// Goes into the default microphone. Any one thread.
    virtual void speak(std::span<const std::int16_t> samples) = 0;
    /// What is recorded is bit for bit what was spoken. PipeWire's pipe keeps time of its own, and skips when the
    /// machine is busy.
    virtual bool isExact() const { return true; }
};

class FakeMachine final : public Machine {
public:
    FakeMachine()
    {
        m_input.setMicrophones({{"second", "second-description", false}, {"first", "first-description", true}});
        m_serverless.setError(AudioInputError{Kind::noServer, "nobody there"});
    }
    AudioInput& input() override { return m_input; }
    AudioInput& withoutServer() override { return m_serverless; }
    void speak(std::span<const std::int16_t> samples) override
    {
        const auto capture = m_input.capture();
        std::thread([&] { capture->push(samples); }).join();
    }

private:
    FakeAudioInput m_input;
    FakeAudioInput m_serverless;
};

class ServerMachine final : public Machine {
public:
    explicit ServerMachine(AudioServer::Kind kind)
        : m_server(kind), m_first(m_server.addMicrophone("first")), m_second(m_server.addMicrophone("second")),
          m_input({}, m_server.address(), kPatient), m_serverless({}, "unix:/nonexistent/pulse/native", kPatient)
    {}
    AudioInput& input() override { return m_input; }
    AudioInput& withoutServer() override { return m_serverless; }
    void speak(std::span<const std::int16_t> samples) override { m_first.feed(samples); }
    bool isExact() const override { return m_server.kind() == AudioServer::Kind::pulseAudio; }

private:
    AudioServer m_server;
    PipeMicrophone m_first;
    PipeMicrophone m_second;
    PulseAudioInput m_input;
    PulseAudioInput m_serverless;
};

using MakeMachine = std::unique_ptr<Machine> (*)();

class AudioInputContract : public testing::TestWithParam<MakeMachine> {
protected:
    Stream open(AudioInputRequest request)
    {
        auto stream = await(machine->input().open(std::move(request), recording));
        EXPECT_TRUE(stream) << stream.error().detail;
        return stream ? *std::move(stream) : nullptr;
    }

    const std::unique_ptr<Machine> machine = GetParam()();
    Recording recording;
};

TEST_P(AudioInputContract, ListsTheMicrophonesAndNoMonitorsTheDefaultFirst)
{
    const auto microphones = await(machine->input().microphones());
    ASSERT_TRUE(microphones);
    EXPECT_EQ(*microphones, (std::vector<AudioDevice>{{"first", "first-description", true},
                                                      {"second", "second-description", false}}));
}

TEST_P(AudioInputContract, WhatIsSpokenArrivesCompleteAndInOrder)
{
    const auto stream = open({AudioSource::microphone, {}});
    if (machine->isExact()) {
        const auto spoken = noise(kAudioSampleRate);
        machine->speak(spoken);
        runUntil([&] { return recording.size() >= spoken.size(); });
        runUntil([&] { return find(spoken, recording.samples()).has_value(); });
    } else {
        const auto spoken = speechBand(kAudioSampleRate * 4 / 10);
        const Feeder feeder(spoken, [this](auto samples) { machine->speak(samples); });
        EXPECT_TRUE(hears(recording, spoken, 0.98));
    }
    EXPECT_EQ(recording.faults(), 0);
    EXPECT_FALSE(recording.end());
}

TEST_P(AudioInputContract, WhatCannotBeRecordedIsSaid)
{
    const auto kindOf = [this](AudioInput& input, AudioInputRequest request) {
        const auto stream = await(input.open(std::move(request), recording));
        return stream ? std::nullopt : std::optional(stream.error().kind);
    };
    EXPECT_EQ(kindOf(machine->input(), {AudioSource::microphone, "unknown"}), Kind::noDevice);
    EXPECT_EQ(kindOf(machine->input(), {AudioSource::systemAudio, "first"}), Kind::unsupported);
    EXPECT_EQ(kindOf(machine->withoutServer(), {AudioSource::microphone, {}}), Kind::noServer);
    const auto microphones = await(machine->withoutServer().microphones());
    ASSERT_FALSE(microphones);
    EXPECT_EQ(microphones.error().kind, Kind::noServer);
    EXPECT_EQ(recording.size(), 0u);
    EXPECT_FALSE(recording.end());
}

TEST_P(AudioInputContract, NothingArrivesAfterAStreamWasDestroyed)
{
    auto stream = open({AudioSource::microphone, {}});
    const Feeder feeder(noise(kAudioSampleRate), [this](auto samples) { machine->speak(samples); });
    for (int round = 0; round < 20; ++round) {
        Recording other;
        auto fresh = await(machine->input().open({AudioSource::microphone, "first"}, other));
        ASSERT_TRUE(fresh);
        if (round % 2 == 0)
            runUntil([&] { return other.size() > 0; });
        fresh->reset();
        other.close();
        drainMainThread();
        EXPECT_EQ(other.faults(), 0);
    }
    stream.reset();
    recording.close();
    EXPECT_EQ(recording.faults(), 0);
}

TEST_P(AudioInputContract, ARequestCanBeCancelledAtAnyMomentAndTheNextOneWorks)
{
    for (int round = 0; round < 50; ++round) {
        Recording abandoned;
        std::optional<Result<Stream, AudioInputError>> result;
        TaskScope scope;
        scope.start(storeResult(machine->input().open({AudioSource::microphone, {}}, abandoned), result));
        for (int pass = 0; pass < round % 5; ++pass)
            std::this_thread::yield();
        scope.requestStop();
        runUntil([&] { return scope.isEmpty(); });
        EXPECT_TRUE(*result || result->error().kind == Kind::failed) << result->error().detail;
        result.reset();
        abandoned.close();
        EXPECT_EQ(abandoned.faults(), 0);
    }
    const auto stream = open({AudioSource::microphone, {}});
    machine->speak(noise(kAudioSampleRate / 2));
    runUntil([&] { return recording.size() > 0; });
}

TEST_P(AudioInputContract, SeveralStreamsRunBesideEachOther)
{
    Recording second;
    Recording system;
    auto stream = open({AudioSource::microphone, {}});
    const auto systemStream = await(machine->input().open({AudioSource::systemAudio, {}}, system));
    const auto secondStream = await(machine->input().open({AudioSource::microphone, "second"}, second));
    ASSERT_TRUE(systemStream && secondStream);
    EXPECT_FALSE(recording.end() || second.end() || system.end());
    stream.reset();
    drainMainThread();
    EXPECT_FALSE(second.end() || system.end());
}

INSTANTIATE_TEST_SUITE_P(Fake, AudioInputContract,
                         testing::Values([]() -> std::unique_ptr<Machine> { return std::make_unique<FakeMachine>(); }));
INSTANTIATE_TEST_SUITE_P(PulseAudio, AudioInputContract, testing::Values([]() -> std::unique_ptr<Machine> {
                             return std::make_unique<ServerMachine>(AudioServer::Kind::pulseAudio);
                         }));
INSTANTIATE_TEST_SUITE_P(PipeWire, AudioInputContract, testing::Values([]() -> std::unique_ptr<Machine> {
                             return std::make_unique<ServerMachine>(AudioServer::Kind::pipeWire);
                         }));

} // namespace
