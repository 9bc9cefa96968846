// People begin to speak as they press: the time from the key event to the first captured sample, through everything
// that a dictation starts, against a bare client that grabs the key itself and asks the audio server for samples when
// it comes.

#include "app/overlay/OverlayManager.h"
#include "bench/Bystander.h"
#include "bench/Median.h"
#include "core/session/ConfigurationManager.h"
#include "core/session/ShortcutUserFeedbackService.h"
#include "core/session/shortcuts/CarbonHotkeyManager.h"
#include "core/session/shortcuts/KeyboardShortcutManager.h"
#include "core/storage/history/HistoryService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "models/KeyboardShortcutText.h"
#include "platform/pulse/PulseAudioInput.h"
#include "platform/x11/hotkeys/X11HotKeys.h"
#include "tests/support/AudioServer.h"
#include "tests/support/DesktopRules.h"
#include "tests/support/MainLoop.h"
#include "tests/support/XDisplay.h"

#include <QCoreApplication>

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <pulse/pulseaudio.h>

#include <atomic>
#include <cstdio>
#include <thread>

using namespace vocalith;
using namespace vocalith::test;

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr double kLimit = 1.2;
constexpr int kRounds = 31;
/// PulseAudio has the pipe's samples at once; a sound card gives its first ones after a period, of 20 ms here.
constexpr Milliseconds kPeriod{20};

/// The real audio input, with an eye on the first sample.
class WatchedInput final : public AudioInput {
public:
    explicit WatchedInput(const std::string& server) : m_real({}, server, {}) {}

    Task<Result<std::vector<AudioDevice>, AudioInputError>> microphones() override { return m_real.microphones(); }
    Task<Result<std::unique_ptr<AudioInputStream>, AudioInputError>> open(AudioInputRequest request,
                                                                          AudioInputListener& listener) override
    {
        m_watch.listener = &listener;
        return m_real.open(std::move(request), m_watch);
    }
    void forget() { m_watch.hasArrived = false; }
    bool hasArrived() const { return m_watch.hasArrived; }
    Instant firstSample() const { return m_watch.at; }

private:
    struct Watch final : AudioInputListener {
        void samplesArrived(std::span<const std::int16_t> samples) override
        {
            if (!hasArrived)
                at = std::chrono::steady_clock::now();
            hasArrived = true;
            listener->samplesArrived(samples);
        }
        void streamEnded(Result<void, AudioInputError> reason) override { listener->streamEnded(std::move(reason)); }

        AudioInputListener* listener = nullptr;
        std::atomic<bool> hasArrived = false;
        Instant at;
    };
    PulseAudioInput m_real;
    Watch m_watch;
};

class IdleEngine final : public TranscriptionService {
public:
    TranscriptionModelID modelId() const override { return PredefinedModelID::tiny; }
    Task<Result<void, TranscriptionError>> start() override { co_return Result<void, TranscriptionError>(); }
    Task<Result<TranscriptionData, TranscriptionError>> transcribe(std::filesystem::path, ProgressHandler) override
    {
        co_return TranscriptionData{};
    }
};

/// A keyboard under a user's fingers.
class Fingers {
public:
    explicit Fingers(const std::string& display) : m_display(XOpenDisplay(display.c_str())) {}
    ~Fingers() { XCloseDisplay(m_display); }

    void set(KeySym key, bool isDown)
    {
        XTestFakeKeyEvent(m_display, XKeysymToKeycode(m_display, key), isDown ? True : False, CurrentTime);
        XFlush(m_display);
    }

private:
    Display* m_display;
};

struct Ours {
    Ours(const XDisplay& display, const std::string& server)
        : input(server), hotKeys(X11HotKeys::open(display.name(), {}).value())
    {
        auto prompt = storage.mainPrompt.get();
        prompt.shortcut.keys = parseKeys("F9");
        prompt.shortcut.activationMode = ActivationMode::pushToTalk;
        storage.mainPrompt.set(prompt);
        if (!configuration.load())
            std::abort();
        shortcuts.start();
        phase = overlay.phase.subscribe([this](DictationPhase now) {
            if (now == DictationPhase::recording)
                shortcuts.dictationStarted(storage.mainPrompt.get().shortcut.id);
            else if (now == DictationPhase::idle)
                shortcuts.dictationEnded();
        });
    }

    Milliseconds dictate(Fingers& fingers)
    {
        input.forget();
        const auto start = clock.instant();
        fingers.set(XK_F9, true);
        runUntil([this] { return input.hasArrived(); });
        const Milliseconds passed = input.firstSample() - start;
        notifier.escapeTriggered.emit();
        runUntil([this] { return overlay.phase.get() == DictationPhase::idle; });
        fingers.set(XK_F9, false);
        bool isOver = false;
        const auto timer = clock.after(std::chrono::milliseconds(350), [&isOver] { isOver = true; }); // the cooldown
        runUntil([&isOver] { return isOver; });
        return passed;
    }

    TemporaryFolder folder;
    SystemClock clock;
    WatchedInput input;
    std::unique_ptr<X11HotKeys> hotKeys;
    bench::Bystander bystander;
    const LogService log = LogService::toListener([](LogLevel, std::string_view, std::string_view) {});
    PersistentAppStorage storage{folder / "settings.json", clock, Logger()};
    HistoryService history{
        {folder / "History", folder / "recordings", folder / "history.sqlite"}, storage, clock, Logger()};
    AudioRecordingManager recorder{input, storage, clock, folder / "recordings", Logger()};
    test::DesktopRules desktop{storage, bystander, clock, log};
    TranscriptProcessingService pipeline{
        TranscriptProcessingService::defaultSteps({bystander, storage, bystander, desktop.rules, &history}, log)};
    TranscriptionSessionManager session{
        [](const TranscriptionModelID&,
           TranscriptionSource) -> Result<std::unique_ptr<TranscriptionService>, TranscriptionError> {
            return std::make_unique<IdleEngine>();
        },
        pipeline, storage, Logger()};
    ConfigurationManager configuration{[this]() -> Result<DictationConfiguration, std::string> {
                                           DictationConfiguration loaded;
                                           const auto prompt = storage.mainPrompt.get();
                                           loaded.shortcuts = {{prompt.shortcut.id, {0, prompt}}};
                                           return loaded;
                                       },
                                       Logger()};
    ShortcutUserFeedbackService feedback{bystander, bystander, storage, Logger()};
    ShortcutNotifier notifier;
    OverlayManager overlay{
        {notifier, recorder, session, configuration, feedback, history, clock, bystander, bystander, bystander},
        Logger()};
    CarbonHotkeyManager carbon{*hotKeys, Logger()};
    KeyboardShortcutManager shortcuts{clock, storage, carbon, *hotKeys, notifier, Logger()};
    Subscription phase;
};

/// The least that it takes: a grab, and a stream when its key comes.
class Bare {
public:
    Bare(const XDisplay& display, std::string server)
        : m_display(XOpenDisplay(display.name().c_str())), m_server(std::move(server))
    {
        XkbSetDetectableAutoRepeat(m_display, True, nullptr);
        XGrabKey(m_display, XKeysymToKeycode(m_display, XK_F8), 0, DefaultRootWindow(m_display), False, GrabModeAsync,
                 GrabModeAsync);
        XSync(m_display, False);
    }
    ~Bare() { XCloseDisplay(m_display); }

    Milliseconds capture(Fingers& fingers)
    {
        const auto start = std::chrono::steady_clock::now();
        fingers.set(XK_F8, true);
        for (XEvent event{}; event.type != KeyPress;)
            XNextEvent(m_display, &event);
        firstSample();
        const Milliseconds passed = std::chrono::steady_clock::now() - start;
        fingers.set(XK_F8, false);
        for (XEvent event{}; event.type != KeyRelease;)
            XNextEvent(m_display, &event);
        return passed;
    }

private:
    struct Client {
        pa_context* context = nullptr;
        pa_stream* stream = nullptr;
        bool hasArrived = false;
    };

    static void connected(Client& client)
    {
        const pa_sample_spec spec{PA_SAMPLE_S16NE, kAudioSampleRate, 1};
        pa_buffer_attr buffer{};
        buffer.maxlength = static_cast<std::uint32_t>(-1);
        buffer.fragsize = kAudioSampleRate / 50 * 2;
        client.stream = pa_stream_new(client.context, "bare", &spec, nullptr);
        pa_stream_set_read_callback(
            client.stream, [](pa_stream*, std::size_t, void* self) { static_cast<Client*>(self)->hasArrived = true; },
            &client);
        pa_stream_connect_record(client.stream, nullptr, &buffer, PA_STREAM_ADJUST_LATENCY);
    }

    void firstSample() const
    {
        Client client;
        pa_mainloop* const loop = pa_mainloop_new();
        client.context = pa_context_new(pa_mainloop_get_api(loop), "bare");
        pa_context_set_state_callback(
            client.context,
            [](pa_context* context, void* self) {
                if (pa_context_get_state(context) == PA_CONTEXT_READY)
                    connected(*static_cast<Client*>(self));
            },
            &client);
        pa_context_connect(client.context, m_server.c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr);
        while (!client.hasArrived)
            pa_mainloop_iterate(loop, 1, nullptr);
        pa_stream_unref(client.stream);
        pa_context_disconnect(client.context);
        pa_context_unref(client.context);
        pa_mainloop_free(loop);
    }

    Display* m_display;
    const std::string m_server;
};

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const XDisplay display;
    AudioServer server(AudioServer::Kind::pulseAudio);
    const auto microphone = server.addMicrophone("mic");
    const std::jthread speaker([&](const std::stop_token& stop) {
        const std::vector<std::int16_t> piece(kAudioSampleRate / 500);
        for (auto due = std::chrono::steady_clock::now(); !stop.stop_requested(); std::this_thread::sleep_until(due)) {
            microphone.offer(piece);
            due += std::chrono::milliseconds(2);
        }
    });
    Fingers fingers(display.name());
    Ours ours(display, server.address());
    Bare bare(display, server.address());
    std::vector<Milliseconds> mine;
    std::vector<Milliseconds> least;
    for (int round = 0; round < kRounds; ++round) {
        least.push_back(bare.capture(fingers));
        mine.push_back(ours.dictate(fingers));
    }
    await(ours.overlay.shutDown());
    const Milliseconds ourTime = bench::median(mine);
    const Milliseconds bareTime = bench::median(least);
    const double ratio = (ourTime + kPeriod) / (bareTime + kPeriod);
    std::printf("from the key to the first sample: %.1f ms, a bare client %.1f ms\n", ourTime.count(),
                bareTime.count());
    std::printf("shortcut to sample: ratio %.2f (limit %.1f)\n", ratio, kLimit);
    return ratio <= kLimit ? 0 : 1;
}
