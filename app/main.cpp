#include "app/cli/CommandLine.h"
#include "app/cli/DictateCommand.h"
#include "app/cli/DoctorCommand.h"
#include "app/cli/ExitCode.h"
#include "app/cli/MicrophoneReport.h"
#include "app/cli/ModelReport.h"
#include "app/cli/RecognitionChoice.h"
#include "app/cli/SessionDiagnostics.h"
#include "app/cli/StandardOutput.h"
#include "app/cli/TerminalFeedback.h"
#include "app/cli/TranscribeCommand.h"
#include "app/overlay/OverlayManager.h"
#include "app/whisper/OpenMPWaitPolicy.h"
#include "app/whisper/WhisperCPPType.h"
#include "core/session/ConfigurationManager.h"
#include "core/session/ShortcutUserFeedbackService.h"
#include "core/speech/PlatformRecognitionEngine.h"
#include "core/speech/TranscriptionServiceProvider.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "core/speech/whisper/ModelFileManager.h"
#include "core/speech/whisper/WhisperTranscriptionService.h"
#include "core/storage/AppPaths.h"
#include "core/storage/LocalAnalytics.h"
#include "core/storage/PersistentAppStorage.h"
#include "platform/media/FFmpegPCMConverter.h"
#include "platform/media/MediaFileAudioInput.h"
#include "platform/pocketsphinx/PocketSphinxRecognizer.h"
#include "platform/pulse/PulseAudioInput.h"
#include "platform/pulse/PulseDiagnostics.h"

#include <QCoreApplication>

#include <csignal>

using namespace vocalith;

namespace {

/// Every long-lived object of the program, from the bottom up; each lives until those above it are gone.
class Program {
public:
    explicit Program(Command command) : m_command(std::move(command)) {}

    Task<void> execute(int& exitCode);
    Task<int> run(const DictateOptions& options);
    Task<int> run(const TranscribeOptions& options);
    Task<int> run(const ModelsOptions& options) { co_return listModels(options, m_models.rows(), m_terminal); }
    Task<int> run(const DoctorOptions& options);

private:
    const Command m_command;
    const RecognitionOptions m_recognition = recognitionOptions(m_command);
    const AppPaths m_paths = appPaths(environmentVariable);
    const LogService m_log = LogService::toFile(m_paths.logFile);
    SystemClock m_clock;
    Terminal m_terminal;
    TerminalNotices m_notices{m_terminal};
    PersistentAppStorage m_storage{m_paths.settingsFile, m_clock, m_log.logger("settings")};
    LocalAnalytics m_analytics{m_log.logger("analytics")};

    FFmpegPCMConverter m_converter;
    PocketSphinxRecognizer m_recogniser;
    const VoiceModelCatalogue m_catalogue;
    ModelFileManager m_modelFiles{m_paths.modelsFolder, m_catalogue};
    ModelReport m_models{m_catalogue, m_modelFiles, m_recogniser, m_storage, currentPlatformTraits()};
    WhisperCPPType m_whisperCPPType{m_log.logger("whisper.cpp")};
    WhisperTranscriptionService m_whisper{m_storage,        m_modelFiles, m_converter,
                                          m_whisperCPPType, m_clock,      m_log.logger("whisper")};
    PlatformRecognitionEngine m_platform{m_recogniser, m_converter, m_clock, m_log.logger("platform recogniser")};
    const TranscriptionServiceProvider m_engines{m_catalogue, m_modelFiles, currentPlatformTraits(), m_whisper,
                                                 m_platform};

    StandardOutput m_output{m_terminal, m_paths.recordingsFolder};
    TranscriptProcessingService m_pipeline{TranscriptProcessingService::defaultSteps(m_output, m_notices, m_log)};
    TranscriptionSessionManager m_session{
        [this](const auto& model, auto source) { return m_engines.service(model, source, {m_recognition.language}); },
        m_pipeline, m_storage, m_log.logger("session")};
};

Task<int> Program::run(const DictateOptions& options)
{
    std::unique_ptr<AudioInput> input = std::make_unique<PulseAudioInput>(m_log.logger("pulse"));
    if (options.audio)
        input = std::make_unique<MediaFileAudioInput>(m_converter, *options.audio);
    AudioRecordingManager recorder(*input, m_storage, m_clock, m_paths.recordingsFolder, m_log.logger("audio"));
    TerminalBell bell(m_terminal);
    UntouchedVolume volume;
    ShortcutUserFeedbackService feedback(bell, volume, m_storage, m_log.logger("feedback"));
    const auto model = chooseModel(m_recognition, TranscriptionSource::dictation, m_models, m_modelFiles);
    m_output.setFormat([&](const auto& text) { return printedDictation(options, text, model); });
    ConfigurationManager configuration([&] { return dictationConfiguration(options, model); },
                                       m_log.logger("configuration"));
    TerminalOverlay display(m_terminal);
    ShortcutNotifier notifier;
    OverlayManager overlay({notifier, recorder, m_session, configuration, feedback, m_analytics, m_notices, display},
                           m_log.logger("overlay"));
    InterruptSignals interrupts;
    DictateCommand command(options, {notifier, configuration, recorder, m_storage, display, m_terminal, interrupts,
                                     m_paths.temporaryFolder / "dictation.lock"});
    const int exitCode = co_await command.run();
    co_await overlay.shutDown();
    co_return exitCode;
}

Task<int> Program::run(const TranscribeOptions& options)
{
    const auto model = chooseModel(m_recognition, TranscriptionSource::file, m_models, m_modelFiles);
    InterruptSignals interrupts;
    TranscribeCommand command(options, model,
                              {m_session, m_terminal, interrupts, m_storage, m_clock, m_paths.recordingsFolder});
    co_return co_await command.run();
}

Task<int> Program::run(const DoctorOptions& options)
{
    SessionDiagnostics session(environmentVariable);
    PulseDiagnostics pulse(m_log.logger("pulse"));
    PulseAudioInput input(m_log.logger("pulse"));
    MicrophoneReport microphones(input);
    DoctorCommand command(options, {session, pulse, microphones, m_models}, m_terminal);
    co_return co_await command.run();
}

Task<void> Program::execute(int& exitCode)
{
    auto work = std::visit([this](const auto& options) { return run(options); }, m_command);
    const int code = co_await work;
    exitCode = code;
    QCoreApplication::exit();
}

} // namespace

int main(int argc, char** argv)
{
    reexecuteWithPassiveWaiting(argv);
    std::signal(SIGPIPE, SIG_IGN); // a reader that leaves is an error of the write, not the end of the program
    auto command = parseCommandLine(argc, argv);
    if (!command)
        return command.error();
    const QCoreApplication application(argc, argv);
    int exitCode = exitFailure;
    Program program(std::move(*command));
    TaskScope scope;
    scope.start(program.execute(exitCode));
    while (!scope.isEmpty())
        QCoreApplication::exec();
    return exitCode;
}
