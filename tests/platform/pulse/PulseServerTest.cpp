#include "platform/pulse/PulseAudioInput.h"
#include "platform/pulse/PulseDiagnostics.h"
#include "tests/platform/pulse/Patience.h"
#include "tests/platform/pulse/Recording.h"
#include "tests/support/AudioServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;

namespace {

using Kind = AudioInputError::Kind;
using Stream = std::unique_ptr<AudioInputStream>;
using testing::HasSubstr;

/// The program writes a cookie into its home and looks at its display; neither is the developer's.
class PrivateHome final : public testing::Environment {
public:
    PrivateHome()
    {
        setenv("HOME", m_folder.path().c_str(), 1);
        setenv("XDG_CONFIG_HOME", (m_folder / "config").c_str(), 1);
        for (const auto* variable : {"DISPLAY", "PULSE_SERVER", "PULSE_COOKIE"})
            unsetenv(variable);
    }

private:
    TemporaryFolder m_folder;
};
const auto* const kPrivateHome = testing::AddGlobalTestEnvironment(new PrivateHome);

/// What happens to a running capture when its machine changes, on both servers.
class PulseServerTest : public testing::TestWithParam<AudioServer::Kind> {
protected:
    static Stream open(PulseAudioInput& input, AudioInputRequest request, Recording& listener)
    {
        auto stream = await(input.open(std::move(request), listener));
        EXPECT_TRUE(stream) << stream.error().detail;
        return stream ? *std::move(stream) : nullptr;
    }
    static std::vector<std::int16_t> repeated(const std::vector<std::int16_t>& signal)
    {
        std::vector<std::int16_t> signals;
        while (signals.size() < 60 * kAudioSampleRate)
            signals.insert(signals.end(), signal.begin(), signal.end());
        return signals;
    }
    static Feeder feed(PipeMicrophone& microphone, const std::vector<std::int16_t>& signal)
    {
        return {signal, [&microphone](auto samples) { microphone.offer(samples); }};
    }
    const std::vector<std::int16_t> m_rising = speechBand(kAudioSampleRate * 4 / 10);
    const std::vector<std::int16_t> m_falling{m_rising.rbegin(), m_rising.rend()};
    AudioServer server{GetParam()};
    PulseAudioInput patient{{}, server.address(), kPatient};
    Recording recording;
};

TEST_P(PulseServerTest, AKilledServerEndsTheStreamAndLosesNothingOfBefore)
{
    auto microphone = server.addMicrophone("mic");
    const auto stream = open(patient, {AudioSource::microphone, {}}, recording);
    {
        const auto feeder = feed(microphone, m_rising);
        ASSERT_TRUE(hears(recording, m_rising));
    }
    server.kill();
    runUntil([&] { return recording.end().has_value(); });
    EXPECT_EQ(recording.failure(), Kind::serverLost);
    EXPECT_GT(correlation(m_rising, recording.samples()), 0.9);
    EXPECT_EQ(recording.faults(), 0);

    const auto again = await(patient.microphones());
    ASSERT_FALSE(again) << "a dead connection was used again";
    EXPECT_EQ(again.error().kind, Kind::noServer);
}

TEST_P(PulseServerTest, AFrozenServerIsNoticedAndNobodyWaitsForIt)
{
    auto microphone = server.addMicrophone("mic");
    auto times = kPatient;
    times.connect = 2s;
    times.firstData = 4s;
    times.stall = 1s;
    PulseAudioInput impatient({}, server.address(), times);
    auto stream = open(impatient, {AudioSource::microphone, {}}, recording);
    Recording other;
    auto otherStream = open(patient, {AudioSource::microphone, {}}, other);
    const auto feeder = feed(microphone, m_rising);
    runUntil([&] { return recording.size() > 0 && other.size() > 0; });

    server.freeze();
    runUntil([&] { return recording.end().has_value(); });
    EXPECT_EQ(recording.failure(), Kind::serverLost);
    EXPECT_FALSE(other.end()) << "patience is over too soon";

    const auto before = std::chrono::steady_clock::now();
    stream.reset();
    otherStream.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - before, 5s) << "it waited for the server";
    other.close();

    const auto late = await(impatient.open({AudioSource::microphone, {}}, recording));
    ASSERT_FALSE(late);
    EXPECT_EQ(late.error().kind, Kind::noServer);
    server.thaw();
    runUntil([&] { return server.connections() == 0; });
    EXPECT_EQ(other.faults(), 0);
}

TEST_P(PulseServerTest, ANamedMicrophoneThatIsUnpluggedIsLost)
{
    auto named = server.addMicrophone("named");
    auto fallback = server.addMicrophone("fallback");
    const auto stream = open(patient, {AudioSource::microphone, "named"}, recording);
    Recording other;
    const auto otherStream = open(patient, {AudioSource::microphone, "fallback"}, other);
    const auto namedFeeder = feed(named, m_rising);
    const auto fallbackFeeder = feed(fallback, m_falling);
    ASSERT_TRUE(hears(recording, m_rising));

    server.remove("named");
    runUntil([&] { return recording.end().has_value(); });
    EXPECT_EQ(recording.failure(), Kind::deviceLost);
    EXPECT_LT(correlation(m_falling, recording.samples()), 0.9) << "it went on with another microphone";
    EXPECT_TRUE(hears(other, m_falling));
    EXPECT_EQ(recording.faults(), 0);
}

TEST_P(PulseServerTest, TheDefaultMicrophoneIsFollowed)
{
    auto first = server.addMicrophone("first");
    auto second = server.addMicrophone("second");
    const auto stream = open(patient, {AudioSource::microphone, {}}, recording);
    const auto firstFeeder = feed(first, m_rising);
    const auto secondFeeder = feed(second, m_falling);
    ASSERT_TRUE(hears(recording, m_rising));

    server.setDefaultSource("second"); // chosen by the user
    ASSERT_TRUE(hears(recording, m_falling));
    server.remove("second"); // unplugged
    EXPECT_TRUE(hears(recording, m_rising));
    EXPECT_FALSE(recording.end());
    EXPECT_EQ(recording.faults(), 0);
}

TEST_P(PulseServerTest, WithoutAMicrophoneNothingIsRecordedFromAMonitor)
{
    const auto refused = await(patient.open({AudioSource::microphone, {}}, recording));
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().kind, Kind::noDevice);

    auto microphone = server.addMicrophone("only");
    auto times = kPatient;
    times.replacement = 300ms;
    PulseAudioInput hasty({}, server.address(), times);
    const auto stream = open(hasty, {AudioSource::microphone, {}}, recording);
    {
        const auto feeder = feed(microphone, m_rising);
        ASSERT_TRUE(hears(recording, m_rising));
    }
    const auto isSilent = [](const std::vector<std::int16_t>& samples) {
        return std::ranges::all_of(samples, [](auto sample) { return sample == 0; });
    };
    const auto silence = feed(microphone, std::vector<std::int16_t>(kAudioSampleRate));
    const auto spoken = recording.size();
    runUntil([&] { // until nothing of the signal is left in the pipe
        const auto size = recording.size();
        return size > spoken + kAudioSampleRate && isSilent(recording.samples(size - kAudioSampleRate / 2));
    });
    server.play("speaker", noise(kAudioSampleRate * 10));
    const auto from = recording.size();
    server.remove("only");
    runUntil([&] { return recording.end().has_value(); });
    EXPECT_EQ(recording.failure(), Kind::deviceLost);
    EXPECT_TRUE(isSilent(recording.samples(from))) << "what was played got into the dictation";
}

TEST_P(PulseServerTest, TheDefaultSinksMonitorHearsWhatIsPlayedAndIsFollowed)
{
    const auto stream = open(patient, {AudioSource::systemAudio, {}}, recording);
    server.play("speaker", repeated(m_rising)); // a sink that was idle swallows the beginning
    ASSERT_TRUE(hears(recording, m_rising));

    server.stopPlaying(); // or it would move along with the default
    server.addSink("headphones");
    server.play("headphones", repeated(m_falling));
    server.setDefaultSink("headphones");
    EXPECT_TRUE(hears(recording, m_falling));
    EXPECT_EQ(recording.faults(), 0);
}

TEST_P(PulseServerTest, TimeWithoutADeviceIsFilledSoThatNothingShifts)
{
    const auto stream = open(patient, {AudioSource::systemAudio, {}}, recording);
    runUntil([&] { return recording.size() > 0; });
    const auto before = std::chrono::steady_clock::now();
    const auto from = recording.size();
    server.remove("speaker");
    runUntil([&] { return std::chrono::steady_clock::now() - before > 2500ms; });
    server.addSink("other");
    server.setDefaultSink("other");
    runUntil([&] { return recording.size() - from > 3 * kAudioSampleRate; });
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - before;
    // A busy machine's server skips a little, and hands over late; the gap is more than twice as long.
    EXPECT_NEAR(static_cast<double>(recording.size() - from) / kAudioSampleRate, passed.count(), 1.2);
    EXPECT_FALSE(recording.end());
}

TEST_P(PulseServerTest, NothingStaysConnectedWhenNothingRecords)
{
    auto microphone = server.addMicrophone("mic");
    const auto feeder = feed(microphone, m_rising);
    auto stream = open(patient, {AudioSource::microphone, {}}, recording);
    for (int round = 0; round < 3; ++round)
        ASSERT_TRUE(await(patient.microphones()));
    runUntil([&] { return server.connections() == 1; });
    stream.reset();
    runUntil([&] { return server.connections() == 0; });
    ASSERT_TRUE(await(patient.microphones()));
    runUntil([&] { return server.connections() == 0; });
}

TEST_P(PulseServerTest, CancelledCapturesLeaveNoStreamOnASharedConnection)
{
    auto microphone = server.addMicrophone("mic");
    const auto feeder = feed(microphone, m_rising);
    const auto stream = open(patient, {AudioSource::microphone, {}}, recording);
    for (int round = 0; round < 30; ++round) {
        Recording abandoned;
        std::optional<Result<Stream, AudioInputError>> result;
        TaskScope scope;
        scope.start(storeResult(patient.open({AudioSource::microphone, "mic"}, abandoned), result));
        // Each round a little later, so that some end while the server is just making their stream.
        const auto until = std::chrono::steady_clock::now() + round * 100us;
        runUntil([&] { return std::chrono::steady_clock::now() >= until; });
        scope.requestStop();
        runUntil([&] { return scope.isEmpty(); });
        result.reset();
        abandoned.close();
        EXPECT_EQ(abandoned.faults(), 0);
    }
    runUntil([&] { return server.recordings() == 1; });
    EXPECT_FALSE(recording.end());
}

TEST_P(PulseServerTest, TheDiagnosticsSayWhatIsMissingAndHowToMendIt)
{
    using State = Finding::State;
    PulseDiagnostics diagnostics({}, server.address(), kPatient);
    std::vector<Finding> findings;
    // PipeWire tells each of its clients of a change in its own time.
    const auto microphoneBecomes = [&](State state) {
        return runUntil([&] {
            findings = await(diagnostics.examine());
            return findings.size() == 3 && findings[1].state == state;
        });
    };
    ASSERT_TRUE(microphoneBecomes(State::missing));
    EXPECT_FALSE(findings[1].remedy.empty());
    const bool isPipeWire = GetParam() == AudioServer::Kind::pipeWire;
    EXPECT_EQ(findings[0].state, State::good);
    EXPECT_THAT(findings[0].detail, HasSubstr(isPipeWire ? "PipeWire " : "PulseAudio "));
    EXPECT_EQ(findings[2].state, State::good);
    EXPECT_THAT(findings[2].detail, HasSubstr("speaker-description"));

    auto microphone = server.addMicrophone("mic");
    ASSERT_TRUE(microphoneBecomes(State::good));
    EXPECT_EQ(findings[1], (Finding{"Microphone", State::good, "mic-description", {}}));
    server.pactl({"set-source-mute", "mic", "1"});
    ASSERT_TRUE(microphoneBecomes(State::limited));
    EXPECT_THAT(findings[1].remedy, HasSubstr("set-source-mute"));
    server.setDefaultSource("speaker.monitor");
    ASSERT_TRUE(microphoneBecomes(State::missing));
    EXPECT_EQ(findings[1].remedy, "pactl set-default-source mic");

    server.kill();
    findings = await(diagnostics.examine());
    ASSERT_EQ(findings.size(), 3u);
    for (const auto& finding : findings) {
        EXPECT_EQ(finding.state, State::missing);
        EXPECT_FALSE(finding.remedy.empty());
    }
}

INSTANTIATE_TEST_SUITE_P(PulseAudio, PulseServerTest, testing::Values(AudioServer::Kind::pulseAudio));
INSTANTIATE_TEST_SUITE_P(PipeWire, PulseServerTest, testing::Values(AudioServer::Kind::pipeWire));

TEST(PulseAudioInput, AServerThatWantsASecretRefuses)
{
    AudioServer server(AudioServer::Kind::pulseAudio);
    PulseAudioInput input({}, server.addGuardedAddress(), kPatient);
    const auto microphones = await(input.microphones());
    ASSERT_FALSE(microphones);
    EXPECT_EQ(microphones.error().kind, Kind::permissionDenied);
}

} // namespace
