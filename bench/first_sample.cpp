// The first words are not waited for: the time from asking for a capture to its first samples, against the least that a
// client of the same library can do, on both audio servers.

#include "bench/Median.h"
#include "platform/pulse/PulseAudioInput.h"
#include "tests/support/AudioServer.h"
#include "tests/support/MainLoop.h"

#include <pulse/pulseaudio.h>

#include <QCoreApplication>

#include <atomic>
#include <cstdio>
#include <thread>

using namespace vocalith;
using namespace vocalith::test;

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr double kLimit = 1.5;
constexpr int kRounds = 31;

class FirstSample final : public AudioInputListener {
public:
    void samplesArrived(std::span<const std::int16_t> /*samples*/) override
    {
        if (!hasArrived)
            at = Clock::now();
        hasArrived = true;
    }
    void streamEnded(Result<void, AudioInputError> /*reason*/) override {}

    std::atomic<bool> hasArrived = false;
    Clock::time_point at;
};

Milliseconds ours(const std::string& address)
{
    PulseAudioInput input({}, address, {}); // a new one, which has no connection yet
    FirstSample first;
    const auto start = Clock::now();
    const auto stream = await(input.open({AudioSource::microphone, {}}, first));
    runUntil([&] { return !stream || first.hasArrived.load(); });
    return first.at - start;
}

struct Bare {
    pa_mainloop* loop = pa_mainloop_new();
    pa_context* context = pa_context_new(pa_mainloop_get_api(loop), "bare");
    pa_stream* stream = nullptr;
    bool hasArrived = false;

    void connected()
    {
        const pa_sample_spec spec{PA_SAMPLE_S16NE, kAudioSampleRate, 1};
        pa_buffer_attr buffer{};
        buffer.maxlength = static_cast<std::uint32_t>(-1);
        buffer.fragsize = kAudioSampleRate / 50 * 2;
        stream = pa_stream_new(context, "bare", &spec, nullptr);
        pa_stream_set_read_callback(
            stream, [](pa_stream*, std::size_t, void* bare) { static_cast<Bare*>(bare)->hasArrived = true; }, this);
        pa_stream_connect_record(stream, nullptr, &buffer, PA_STREAM_ADJUST_LATENCY);
    }
};

Milliseconds bare(const std::string& address)
{
    const auto start = Clock::now();
    Bare client;
    pa_context_set_state_callback(
        client.context,
        [](pa_context* context, void* self) {
            if (pa_context_get_state(context) == PA_CONTEXT_READY)
                static_cast<Bare*>(self)->connected();
        },
        &client);
    pa_context_connect(client.context, address.c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr);
    while (!client.hasArrived)
        pa_mainloop_iterate(client.loop, 1, nullptr);
    const auto passed = Clock::now() - start;
    pa_stream_unref(client.stream);
    pa_context_disconnect(client.context);
    pa_context_unref(client.context);
    pa_mainloop_free(client.loop);
    return passed;
}

/// `wait` is what both would wait for on a sound card, and do not wait for here.
bool measure(AudioServer::Kind kind, const char* name, Milliseconds wait)
{
    AudioServer server(kind);
    const auto microphone = server.addMicrophone("mic");
    const std::jthread speaker([&](const std::stop_token& stop) {
        const std::vector<std::int16_t> piece(kAudioSampleRate / 500);
        for (auto due = Clock::now(); !stop.stop_requested(); std::this_thread::sleep_until(due)) {
            microphone.offer(piece);
            due += std::chrono::milliseconds(2);
        }
    });
    std::vector<Milliseconds> mine;
    std::vector<Milliseconds> least;
    for (int round = 0; round < kRounds; ++round) {
        least.push_back(bare(server.address()));
        mine.push_back(ours(server.address()));
    }
    const Milliseconds ourTime = bench::median(mine);
    const Milliseconds bareTime = bench::median(least);
    const double ratio = (ourTime + wait) / (bareTime + wait);
    std::printf("%s: %.1f ms, a bare client %.1f ms\n", name, ourTime.count(), bareTime.count());
    std::printf("first sample from %s: ratio %.2f (limit %.1f)\n", name, ratio, kLimit);
    return ratio <= kLimit;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    // PulseAudio has the pipe's samples at once; a sound card gives its first ones after a period, of 20 ms here.
    const bool pulseAudio = measure(AudioServer::Kind::pulseAudio, "PulseAudio", Milliseconds(20));
    const bool pipeWire = measure(AudioServer::Kind::pipeWire, "PipeWire", Milliseconds(0));
    return pulseAudio && pipeWire ? 0 : 1;
}
