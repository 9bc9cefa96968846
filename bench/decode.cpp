// What our way of decoding costs beside the library itself: the whole service (reading the recording, the worker, the
// parameters, the collection of the segments) against a bare whisper_full with the same samples, model and parameters.

#include "app/whisper/OpenMPWaitPolicy.h"
#include "app/whisper/WhisperCPPType.h"
#include "base/TaskScope.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "core/speech/whisper/ModelFileManager.h"
#include "core/speech/whisper/WhisperTranscriptionService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "platform/media/FFmpegPCMConverter.h"
#include "tests/support/ScriptedWhisperModel.h"
#include "tests/support/TemporaryFolder.h"

#include <fmt/format.h>
#include <whisper.h>

#include <QCoreApplication>
#include <QEventLoop>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <limits>
#include <numbers>
#include <optional>
#include <vector>

using namespace vocalith;

namespace {

constexpr double kLimit = 1.02;
constexpr int kRounds = 8;
const TranscriptionModelID kModel = std::string("model");

/// Counts what is loaded.
class CountingType final : public WhisperCPPFactory {
public:
    Result<std::unique_ptr<WhisperCPPDependencyProtocol>, TranscriptionError>
    create(const std::filesystem::path& modelFile, bool useGpu, const TranscriptionModelID& modelId,
           TranscriptionSource source, const WhisperSettings& settings) override
    {
        ++loads;
        return m_type.create(modelFile, useGpu, modelId, source, settings);
    }
    int loads = 0;

private:
    WhisperCPPType m_type{Logger()};
};

/// Eleven seconds of something loud: the model does not listen, and its cost does not depend on it.
void writeRecording(const std::filesystem::path& file)
{
    constexpr std::uint32_t kRate = 16000;
    std::vector<std::int16_t> samples(std::size_t{11} * kRate);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::int16_t>(8000 * std::sin(static_cast<double>(i) * 2 * std::numbers::pi / 80));
    const auto bytes = static_cast<std::uint32_t>(samples.size() * sizeof(std::int16_t));
    std::ofstream stream(file, std::ios::binary);
    const auto number = [&stream](auto value) { stream.write(reinterpret_cast<const char*>(&value), sizeof value); };
    stream << "RIFF";
    number(36 + bytes);
    stream << "WAVEfmt ";
    number(std::uint32_t{16});
    number(std::uint16_t{1});
    number(std::uint16_t{1});
    number(kRate);
    number(2 * kRate);
    number(std::uint16_t{2});
    number(std::uint16_t{16});
    stream << "data";
    number(bytes);
    stream.write(reinterpret_cast<const char*>(samples.data()), bytes);
}

/// The library alone, with the parameters that the service uses for a dictation with the settings as they come.
class BareLibrary {
public:
    BareLibrary(const std::filesystem::path& model, std::vector<float> samples, int threads)
        : m_context(whisper_init_from_file_with_params(model.c_str(), whisper_context_default_params())),
          m_samples(std::move(samples)), m_parameters(whisper_full_default_params(WHISPER_SAMPLING_GREEDY))
    {
        m_parameters.n_threads = threads;
        m_parameters.n_max_text_ctx = 0;
        m_parameters.no_context = true;
        m_parameters.print_progress = false;
        m_parameters.token_timestamps = true;
        m_parameters.suppress_nst = true;
        m_parameters.language = "en";
        m_parameters.temperature = 0;
    }
    BareLibrary(const BareLibrary&) = delete;
    BareLibrary& operator=(const BareLibrary&) = delete;
    ~BareLibrary() { whisper_free(m_context); }

    bool decode()
    {
        return whisper_full(m_context, m_parameters, m_samples.data(), static_cast<int>(m_samples.size())) == 0 &&
               whisper_full_n_segments(m_context) > 0;
    }

private:
    whisper_context* m_context;
    std::vector<float> m_samples;
    whisper_full_params m_parameters;
};

Task<void> store(Task<Result<TranscriptionData, TranscriptionError>> task,
                 std::optional<Result<TranscriptionData, TranscriptionError>>& outcome)
{
    auto result = co_await task;
    outcome = std::move(result);
}

bool dictate(WhisperTranscriptionService& service, const std::filesystem::path& recording)
{
    TaskScope scope;
    std::optional<Result<TranscriptionData, TranscriptionError>> outcome;
    scope.start(store(service.transcribe({kModel}, recording, {}), outcome));
    while (!scope.isEmpty())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return outcome->has_value();
}

double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The least times of one way to decode. All is done by one thread at a time, so the processor's time is what a decode
/// takes on a machine that does nothing else, and it stays so on one that does.
struct Times {
    double processor = std::numeric_limits<double>::max();
    double wall = std::numeric_limits<double>::max();

    template <class Action>
    bool add(const Action& action)
    {
        const auto begin = std::chrono::steady_clock::now();
        const double processorBegin = processorSeconds();
        const bool isSound = action();
        processor = std::min(processor, processorSeconds() - processorBegin);
        wall = std::min(wall, toSeconds(std::chrono::steady_clock::now() - begin));
        return isSound;
    }
};

std::vector<float> samplesOf(const PCMConverter& converter, const std::filesystem::path& recording)
{
    std::vector<float> samples;
    const auto take = [&samples](std::span<const float> piece) {
        samples.insert(samples.end(), piece.begin(), piece.end());
        return true;
    };
    if (!converter.convert(recording, take, [](double) {}, {}))
        samples.clear();
    return samples;
}

int run()
{
    const test::TemporaryFolder folder;
    const auto model = folder / "Models/model.bin";
    const auto recording = folder / "recording.wav";
    test::ScriptedWhisperModel scripted;
    scripted.size = test::ScriptedWhisperModel::Size::whisperTiny;
    scripted.write(model);
    writeRecording(recording);

    SystemClock clock;
    PersistentAppStorage storage(folder / "settings.json", clock, Logger());
    storage.whisperThreads.set(1); // so that the other programs of the machine count least
    storage.whisperFixRepetitions.set(true);
    const VoiceModelCatalogue catalogue;
    const ModelFileManager files(folder / "Models", catalogue);
    const FFmpegPCMConverter converter;
    CountingType type;
    WhisperTranscriptionService service(storage, files, converter, type, clock, Logger());
    BareLibrary bare(model, samplesOf(converter, recording), storage.whisperThreads.get());

    Times ours;
    Times theirs;
    for (int round = 0; round < kRounds; ++round) {
        const bool isSound =
            ours.add([&] { return dictate(service, recording); }) && theirs.add([&] { return bare.decode(); });
        if (!isSound) {
            std::puts("decode: a decode failed");
            return 1;
        }
    }
    const double ratio = ours.processor / theirs.processor;
    fmt::print(
        "decode: ratio {:.3f} (limit {}), {:.1f} ms of processor time against {:.1f} ms ({:.1f} and {:.1f} ms on "
        "the clock), loads after the first dictation {} (limit 0)\n",
        ratio, kLimit, ours.processor * 1000, theirs.processor * 1000, ours.wall * 1000, theirs.wall * 1000,
        type.loads - 1);
    return ratio <= kLimit && type.loads == 1 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    reexecuteWithPassiveWaiting(argv);
    const QCoreApplication application(argc, argv);
    return run();
}
