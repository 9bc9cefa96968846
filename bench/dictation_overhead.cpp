// What a dictation of one minute costs beside its decode: everything between the stop of the recording and the start of
// the decode, and between the decoded text and its delivery, against the decode of a model of whisper-tiny's size.

#include "app/overlay/OverlayManager.h"
#include "app/whisper/WhisperCPPType.h"
#include "bench/Bystander.h"
#include "bench/Median.h"
#include "bench/RecordingBench.h"
#include "core/output/TextOutput.h"
#include "core/session/ConfigurationManager.h"
#include "core/session/ShortcutUserFeedbackService.h"
#include "core/speech/LocalAudioTranscriptionService.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "core/speech/whisper/ModelFileManager.h"
#include "core/storage/history/HistoryService.h"
#include "platform/media/FFmpegPCMConverter.h"
#include "tests/support/DesktopRules.h"
#include "tests/support/ScriptedWhisperModel.h"

#include <QCoreApplication>
#include <QEventLoop>

#include <cstdio>

using namespace vocalith;
namespace fs = std::filesystem;

namespace {

constexpr double kLimit = 0.02;
constexpr int kRuns = 5;
constexpr int kSeconds = 60;

double seconds()
{
    return toSeconds(std::chrono::steady_clock::now().time_since_epoch());
}

double decodeBegan = 0;
double decodeEnded = 0;
double delivered = 0;

/// The library's wrapper with a stopwatch around the decode.
class TimedWhisper final : public WhisperCPPDependencyProtocol {
public:
    explicit TimedWhisper(std::unique_ptr<WhisperCPPDependencyProtocol> real) : m_real(std::move(real)) {}

    Result<WhisperTranscript, TranscriptionError> transcribe(std::span<const float> samples,
                                                             const ProgressHandler& progress) override
    {
        decodeBegan = seconds();
        auto result = m_real->transcribe(samples, progress);
        decodeEnded = seconds();
        return result;
    }
    void cancel() override { m_real->cancel(); }
    void release() override { m_real->release(); }

private:
    std::unique_ptr<WhisperCPPDependencyProtocol> m_real;
};

class TimedWhisperType final : public WhisperCPPFactory {
public:
    Result<std::unique_ptr<WhisperCPPDependencyProtocol>, TranscriptionError>
    create(const fs::path& modelFile, bool useGpu, const TranscriptionModelID& modelId, TranscriptionSource source,
           const WhisperSettings& settings) override
    {
        auto real = m_real.create(modelFile, useGpu, modelId, source, settings);
        if (!real)
            return failure(std::move(real.error()));
        return std::make_unique<TimedWhisper>(std::move(*real));
    }

private:
    WhisperCPPType m_real{Logger()};
};

class TimedOutput final : public TextOutput {
public:
    Task<Result<TextDestination, TextOutputError>> deliver(std::string, ActionMode) override
    {
        delivered = seconds();
        co_return TextDestination::application;
    }
};

struct Stage {
    explicit Stage(const fs::path& home) : files(home, VoiceModelCatalogue())
    {
        storage.whisperThreads.set(2);
        if (!configuration.load())
            std::abort();
    }

    /// Yields the overhead and the decode, in seconds.
    std::pair<double, double> dictate()
    {
        bystander.ended = false;
        notifier.state.set(keyboard_activation::Activated{shortcut});
        spinUntil([this] { return input.microphone != nullptr; });
        const std::vector<std::int16_t> second(kAudioSampleRate, 1000);
        for (int i = 0; i < kSeconds; ++i)
            input.microphone->samplesArrived(second);
        spinFor(std::chrono::seconds(1)); // the model loads while the user speaks
        const double released = seconds();
        notifier.state.set(keyboard_activation::Completed{shortcut});
        spinUntil([this] { return bystander.ended; });
        input.microphone = nullptr;
        return {decodeBegan - released + (delivered - decodeEnded), decodeEnded - decodeBegan};
    }

    template <class Condition>
    static void spinUntil(Condition condition)
    {
        while (!condition())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    void spinFor(Duration length)
    {
        bool over = false;
        const auto timer = clock.after(length, [&over] { over = true; });
        spinUntil([&over] { return over; });
    }

    const Uuid shortcut = Uuid::random();
    SystemClock clock;
    bench::FedAudioInput input;
    bench::Bystander bystander;
    TimedOutput output;
    ModelFileManager files;
    const LogService log = LogService::toListener([](LogLevel, std::string_view, std::string_view) {});
    PersistentAppStorage storage{files.modelsFolder() / "settings.json", clock, Logger()};
    HistoryService history{{files.modelsFolder() / "History", files.modelsFolder() / "recordings",
                            files.modelsFolder() / "history.sqlite"},
                           storage,
                           clock,
                           Logger()};
    AudioRecordingManager recorder{input, storage, clock, files.modelsFolder() / "recordings", Logger()};
    FFmpegPCMConverter converter;
    TimedWhisperType type;
    WhisperTranscriptionService whisper{storage, files, converter, type, clock, Logger()};
    test::DesktopRules desktop{storage, bystander, clock, log};
    TranscriptProcessingService pipeline{
        TranscriptProcessingService::defaultSteps({output, storage, bystander, desktop.rules, &history}, log)};
    TranscriptionSessionManager session{
        [this](const TranscriptionModelID& model,
               TranscriptionSource source) -> Result<std::unique_ptr<TranscriptionService>, TranscriptionError> {
            WhisperTranscriptionService::Request request{model, source, {}};
            return std::make_unique<LocalAudioTranscriptionService>(whisper, std::move(request));
        },
        pipeline, storage, Logger()};
    ConfigurationManager configuration{[this]() -> Result<DictationConfiguration, std::string> {
                                           DictationConfiguration loaded;
                                           loaded.shortcuts = {{shortcut, {0, VoiceJournal{}}}};
                                           loaded.defaultModel = std::string("tiny-size");
                                           return loaded;
                                       },
                                       Logger()};
    ShortcutUserFeedbackService feedback{bystander, bystander, storage, Logger()};
    ShortcutNotifier notifier;
    OverlayManager overlay{
        {notifier, recorder, session, configuration, feedback, history, clock, bystander, bystander, bystander},
        Logger()};
};

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const fs::path home = fs::temp_directory_path() / ("vocalith-bench-" + Uuid::random().toString());
    fs::create_directories(home);
    test::ScriptedWhisperModel model;
    model.size = test::ScriptedWhisperModel::Size::whisperTiny;
    model.write(home / "tiny-size.bin");
    std::vector<double> ratios;
    {
        Stage stage(home);
        for (int run = 0; run < kRuns; ++run) {
            const auto [overhead, decode] = stage.dictate();
            std::printf("overhead %.1f ms, decode %.0f ms\n", overhead * 1000, decode * 1000);
            ratios.push_back(overhead / decode);
        }
    }
    fs::remove_all(home);
    const double ratio = bench::median(ratios);
    std::printf("dictation overhead to decode: ratio %.4f (limit %.2f)\n", ratio, kLimit);
    return ratio <= kLimit ? 0 : 1;
}
