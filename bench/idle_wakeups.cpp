// Idle means idle: after a dictation, while its model is warm, the whole process sleeps. Counts the wake-ups of all
// threads over ten seconds, as the kernel's voluntary context switches, against one a second.

#include "app/whisper/WhisperCPPType.h"
#include "bench/RecordingBench.h"
#include "core/speech/LocalAudioTranscriptionService.h"
#include "core/speech/PlatformRecognitionEngine.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "core/speech/whisper/ModelFileManager.h"
#include "platform/media/FFmpegPCMConverter.h"
#include "platform/pocketsphinx/PocketSphinxRecognizer.h"
#include "platform/pulse/PulseAudioInput.h"
#include "tests/support/ScriptedWhisperModel.h"

#include <QCoreApplication>

#include <cstdio>
#include <fstream>

using namespace vocalith;
namespace fs = std::filesystem;

namespace {

constexpr double kLimit = 1.0;
constexpr int kIdleSeconds = 10;

/// The times that any thread of this process has gone to sleep and was woken again.
long wakeUps()
{
    long total = 0;
    for (const auto& thread : fs::directory_iterator("/proc/self/task")) {
        std::ifstream status(thread.path() / "status");
        for (std::string line; std::getline(status, line);) {
            constexpr std::string_view kField = "voluntary_ctxt_switches:";
            if (line.starts_with(kField))
                total += std::stol(line.substr(kField.size()));
        }
    }
    return total;
}

/// What the program keeps between two dictations.
struct Resident {
    explicit Resident(const fs::path& home) : files(home, VoiceModelCatalogue()) {}

    Task<void> useAll(fs::path recording, bool& done)
    {
        const WhisperTranscriptionService::Request request{std::string("small"), TranscriptionSource::dictation, {}};
        const auto text = co_await whisper.transcribe(request, recording, [](double) {});
        const auto prepared = co_await platform.prepare();
        const auto devices = co_await input.microphones();
        std::printf("used: whisper %d, system recogniser %d, audio server %d\n", text.has_value(), prepared.has_value(),
                    devices.has_value());
        done = true;
    }

    SystemClock clock;
    ModelFileManager files;
    PersistentAppStorage storage{files.modelsFolder() / "settings.json", clock, Logger()};
    PulseAudioInput input{Logger()};
    AudioRecordingManager recorder{input, storage, clock, files.modelsFolder() / "recordings", Logger()};
    FFmpegPCMConverter converter;
    WhisperCPPType type{Logger()};
    WhisperTranscriptionService whisper{storage, files, converter, type, clock, Logger()};
    PocketSphinxRecognizer recogniser;
    PlatformRecognitionEngine platform{recogniser, converter, clock, Logger()};
};

void spin(Clock& clock, Duration length)
{
    bool over = false;
    const auto timer = clock.after(length, [&over] { over = true; });
    while (!over)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const fs::path home = fs::temp_directory_path() / ("vocalith-bench-" + Uuid::random().toString());
    fs::create_directories(home);
    test::ScriptedWhisperModel().write(home / "small.bin");
    long woken = 0;
    {
        Resident resident(home);
        bool done = false;
        TaskScope scope;
        scope.start(resident.useAll(fs::path(VOCALITH_SAMPLES) / "speech.wav", done));
        while (!done || !scope.isEmpty())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        spin(resident.clock, std::chrono::seconds(2));
        const long before = wakeUps();
        spin(resident.clock, std::chrono::seconds(kIdleSeconds));
        woken = wakeUps() - before;
    }
    fs::remove_all(home);
    const double ratio = static_cast<double>(woken) / kIdleSeconds;
    std::printf("%ld wake-ups in %d s\nidle wake-ups a second: ratio %.2f (limit %.1f)\n", woken, kIdleSeconds, ratio,
                kLimit);
    return ratio <= kLimit ? 0 : 1;
}
