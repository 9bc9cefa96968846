#include "app/Program.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ExitCode.h"
#include "app/cli/doctor/DoctorCommand.h"
#include "app/cli/doctor/MicrophoneReport.h"
#include "app/cli/doctor/SessionDiagnostics.h"
#include "app/cli/history/HistoryCommand.h"
#include "app/cli/recognition/DictateCommand.h"
#include "app/cli/recognition/InterruptedDictationNotice.h"
#include "app/cli/recognition/TranscribeCommand.h"
#include "app/cli/remote/RemoteCommand.h"
#include "app/cli/terminal/StandardStreams.h"
#include "app/cli/terminal/TerminalFeedback.h"
#include "app/desktop/Application.h"
#include "app/desktop/DesktopProgram.h"
#include "app/desktop/ports/DesktopDiagnostics.h"
#include "app/overlay/OverlayManager.h"
#include "app/whisper/OpenMPWaitPolicy.h"
#include "core/session/ConfigurationManager.h"
#include "core/session/HistoryEntryActionsService.h"
#include "core/session/InterruptedDictationRecovery.h"
#include "core/session/ShortcutUserFeedbackService.h"
#include "platform/freedesktop/ClipboardProgram.h"
#include "platform/freedesktop/DBusInstance.h"
#include "platform/media/MediaFileAudioInput.h"
#include "platform/pulse/PulseAudioInput.h"
#include "platform/pulse/PulseAudioPlayer.h"
#include "platform/pulse/PulseDiagnostics.h"

#include <QCoreApplication>

namespace vocalith {

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
    OverlayManager overlay(
        {notifier, recorder, m_session, configuration, feedback, m_history, m_clock, m_analytics, m_notices, display},
        m_log.logger("overlay"));
    InterruptedDictationRecovery recovery(recorder, m_storage, m_history);
    InterruptSignals interrupts;
    DictateCommand command(options, {notifier, configuration, recorder, recovery, m_storage, display, m_terminal,
                                     interrupts, m_dictationLock});
    const int exitCode = co_await command.run();
    co_await overlay.shutDown();
    co_await m_history.cleanUpWhenDue();
    co_return exitCode;
}

Task<int> Program::run(const TranscribeOptions& options)
{
    const auto model = chooseModel(m_recognition, TranscriptionSource::file, m_models, m_modelFiles);
    InterruptSignals interrupts;
    TranscribeCommand command(
        options, model,
        {m_session, m_terminal, interrupts, m_storage, m_history, m_converter, m_clock, m_paths.recordingsFolder});
    const int exitCode = co_await command.run();
    co_await m_history.cleanUpWhenDue();
    co_return exitCode;
}

Task<int> Program::run(const HistoryOptions& options)
{
    PulseAudioInput input(m_log.logger("pulse"));
    AudioRecordingManager recorder(input, m_storage, m_clock, m_paths.recordingsFolder, m_log.logger("audio"));
    InterruptedDictationRecovery recovery(recorder, m_storage, m_history);
    const auto interrupted = co_await recovery.recoverUnlessDictating(m_dictationLock);
    if (interrupted)
        noticeInterruptedDictation(*interrupted, m_terminal);

    HistoryEntryActionsService actions(m_history, m_session, m_rules.replacements, m_notices, m_clock, {},
                                       m_log.logger("history"));
    PulseAudioPlayer player(m_converter, m_log.logger("pulse"));
    ClipboardProgram clipboard(m_clock);
    InterruptSignals interrupts;
    const auto modelFor = [this](const auto& recognition) {
        return chooseModel(recognition, TranscriptionSource::dictation, m_models, m_modelFiles);
    };
    HistoryCommand command(options, {m_history, actions, m_storage, player, clipboard, m_clock, interrupts, modelFor,
                                     HistoryOutput(m_terminal)});
    co_return co_await command.run();
}

Task<int> Program::run(const DoctorOptions& options)
{
    SessionDiagnostics session(environmentVariable);
    PulseDiagnostics pulse(m_log.logger("pulse"));
    PulseAudioInput input(m_log.logger("pulse"));
    MicrophoneReport microphones(input);
    DesktopDiagnostics desktop(environmentVariable, m_paths, m_storage, m_clock, m_log);
    DoctorCommand command(options, {session, desktop, pulse, microphones, m_models}, m_terminal);
    co_return co_await command.run();
}

Task<int> Program::run(const RunOptions&)
{
    const DesktopFoundation foundation{m_paths,     m_dictationLock, m_log,         m_clock,  m_storage, m_history,
                                       m_analytics, m_appLauncher,   m_automations, m_models, m_engines, m_terminal};
    co_return co_await runDesktopProgram(foundation);
}

Task<int> Program::run(const RemoteOptions& options)
{
    DBusInstance instance;
    co_return co_await askRunningInstance(options, instance, m_terminal);
}

Task<void> Program::execute(int& exitCode)
{
    m_storage.showProblems(m_notices);
    auto work = std::visit([this](const auto& options) { return run(options); }, m_command);
    const int code = co_await work;
    exitCode = code;
    QCoreApplication::exit();
}

} // namespace vocalith

int main(int argc, char** argv)
{
    using namespace vocalith;
    prepareStandardStreams();
    reexecuteWithPassiveWaiting(argv);
    auto command = parseCommandLine(argc, argv);
    if (!command)
        return command.error();
    const auto application = makeApplication(*command, argc, argv);
    if (!application)
        return exitFailure;
    int exitCode = exitFailure;
    Program program(std::move(*command));
    TaskScope scope;
    scope.start(program.execute(exitCode));
    while (!scope.isEmpty())
        QCoreApplication::exec();
    return exitCode;
}
