#include "app/cli/recognition/DictateCommand.h"

#include "app/cli/ExitCode.h"
#include "app/cli/models/BetterModelHint.h"
#include "app/cli/recognition/HistoryCommandHint.h"
#include "app/cli/recognition/InterruptedDictationNotice.h"
#include "base/Text.h"
#include "core/session/ConfigurationManager.h"
#include "core/session/InterruptedDictationRecovery.h"
#include "core/session/KeyboardActivationState.h"
#include "core/storage/ProcessLock.h"
#include "core/storage/settings/PersistentAppStorage.h"

#include <fmt/format.h>

namespace vocalith {
namespace {

using Colour = Terminal::Colour;

} // namespace

DictateCommand::DictateCommand(DictateOptions options, Services services)
    : m_options(std::move(options)), m_services(services)
{}

Task<int> DictateCommand::run()
{
    // Without a lock for any other reason than another dictation, dictating is worth more than being alone.
    const auto lock = ProcessLock::take(m_services.lockFile);
    if (!lock && lock.error().isHeld)
        co_return complain("A dictation is already running (process " + lock.error().detail +
                           "). End or cancel it first.");
    const auto interrupted = co_await m_services.recovery.recover();
    if (interrupted)
        noticeInterruptedDictation(*interrupted, m_services.terminal);
    const auto loaded = m_services.configurationManager.load();
    if (!loaded)
        co_return complain(loaded.error());
    co_return co_await dictate();
}

int DictateCommand::complain(const std::string& text)
{
    m_services.terminal.line(m_services.terminal.coloured(Colour::red, "Error: ") + text);
    return exitFailure;
}

Task<int> DictateCommand::dictate()
{
    const Uuid shortcut = m_services.configurationManager.configuration()->shortcuts.front().id;
    auto& notifier = m_services.shortcutNotifier;

    OneShot<DictationOutcome> ended;
    m_services.overlay.onDictationEnded([resolve = ended.resolver()](const auto& outcome) { resolve(outcome); });
    const auto watched = followRecording();

    std::unique_ptr<TerminalKeys> keys;
    std::vector<Subscription> controls;
    const auto finish = [&notifier, shortcut] { notifier.state.set(keyboard_activation::Completed{shortcut}); };
    const auto cancel = [&notifier] { notifier.escapeTriggered.emit(); };
    m_cancelling = m_services.interrupts.interrupted.subscribe(cancel);
    controls.push_back(m_services.interrupts.terminated.subscribe(finish));
    m_services.overlay.setKeyHint(m_options.audio ? "Ctrl-C cancels" : "Enter ends, Escape cancels");
    if (!m_options.audio) {
        keys = std::make_unique<TerminalKeys>();
        controls.push_back(keys->enterPressed.subscribe(finish));
        controls.push_back(keys->escapePressed.subscribe(cancel));
    }

    notifier.state.set(keyboard_activation::Activated{shortcut});
    const auto outcome = co_await ended;
    m_services.overlay.onDictationEnded([](const DictationOutcome&) {});
    notifier.state.set(keyboard_activation::Idle{});
    co_return outcome ? report(*outcome) : static_cast<int>(exitCancelled);
}

std::vector<Subscription> DictateCommand::followRecording()
{
    auto& recorder = m_services.audioRecordingManager;
    auto& overlay = m_services.overlay;
    std::vector<Subscription> watched;
    watched.push_back(recorder.visualAudioLevels.subscribe([&overlay](const auto& bars) { overlay.showLevel(bars); }));
    watched.push_back(recorder.elapsedTime.subscribe([&overlay](double time) { overlay.showElapsedTime(time); }));
    return watched;
}

int DictateCommand::report(const DictationOutcome& outcome)
{
    auto& terminal = m_services.terminal;
    if (const auto* delivered = std::get_if<dictation_outcome::Delivered>(&outcome)) {
        hintAtBetterModels(delivered->transcription.modelId, m_services.appStorage, terminal);
        return exitSuccess;
    }
    if (const auto* early = std::get_if<dictation_outcome::EndedEarly>(&outcome)) {
        if (!early->reason.empty() && !early->isFailure)
            terminal.line(cleanText(early->reason, ' '));
        return early->isFailure ? exitFailure : exitSuccess;
    }
    if (const auto* tooShort = std::get_if<dictation_outcome::TooShort>(&outcome)) {
        terminal.line(fmt::format("{}The recording is too short ({:.1f} s). Speak for more than half a second.",
                                  terminal.coloured(Colour::red, "Error: "), tooShort->elapsedTime));
        return exitNoSpeech;
    }
    if (const auto* failed = std::get_if<dictation_outcome::Failed>(&outcome))
        return reportFailure(*failed);
    terminal.line("Cancelled. The recording was thrown away.");
    return exitCancelled;
}

int DictateCommand::reportFailure(const dictation_outcome::Failed& failed)
{
    auto& terminal = m_services.terminal;
    terminal.line(terminal.coloured(Colour::red, "Error: ") + failed.message);
    if (!failed.detail.empty())
        terminal.line(failed.detail);
    if (!failed.text.empty())
        terminal.line("The text was: " + failed.text);
    if (failed.historyEntry && !failed.historyHasText)
        terminal.line("The recording is in the history. Try again with: " +
                      historyCommand("retry", *failed.historyEntry));
    else if (failed.historyEntry)
        terminal.line("It is in the history too. See it with: " + historyCommand("show", *failed.historyEntry));
    else if (failed.recording)
        terminal.line(fmt::format("The recording was kept. Try again with: vocalith transcribe \"{}\"",
                                  failed.recording->string()));
    return failed.noSpeech ? exitNoSpeech : exitFailure;
}

} // namespace vocalith
