#include "app/desktop/DesktopProgram.h"

#include "app/cli/ExitCode.h"
#include "app/cli/recognition/InterruptedDictationNotice.h"
#include "app/cli/terminal/Terminal.h"
#include "core/session/InterruptedDictationRecovery.h"
#include "core/session/StoredDictationConfiguration.h"
#include "core/speech/TranscriptionServiceProvider.h"
#include "core/storage/history/HistoryService.h"
#include "core/storage/settings/PersistentAppStorage.h"

namespace vocalith {

DesktopProgram::DesktopProgram(const DesktopFoundation& foundation, DesktopPorts& ports)
    : m_base(foundation), m_ports(ports),
      m_session([this](const auto& model, auto source) { return m_base.engines.service(model, source, {}); },
                m_pipeline, m_base.storage, m_base.log.logger("session")),
      m_overlay({m_notifier, m_recorder, m_session, m_configuration, m_feedback, m_base.history, m_base.clock,
                 m_base.analytics, m_notices, m_display.model(), &m_ports.pasteboard()},
                m_base.log.logger("overlay")),
      m_shortcuts(m_base.clock, m_base.storage, m_hotKeys, m_ports.hotKeys(), m_notifier,
                  m_base.log.logger("shortcuts")),
      m_setup({m_base.storage, m_suspension, m_input, m_base.clock, m_display.look(), !m_ports.canWatchModifiers()},
              m_base.log.logger("setup")),
      m_tray({m_base.paths, m_base.storage, m_base.history, m_base.models, m_session, m_overlay, m_remote, m_output,
              m_base.appLauncher, m_notices},
             [this] { m_quit.resolver()({}); }),
      m_lock(m_base.dictationLock)
{
    connect();
}

DesktopProgram::~DesktopProgram() = default;

void DesktopProgram::connect()
{
    const auto follow = [this](Subscription subscription) { m_subscriptions.push_back(std::move(subscription)); };
    const auto reload = [this](const auto&) { m_configuration.load(); };
    auto& storage = m_base.storage;
    follow(storage.mainPrompt.subscribe(reload));
    follow(storage.aiPrompts.subscribe(reload));
    follow(storage.storedPromptID.subscribe(reload));
    follow(storage.additionalShortcuts.subscribe(reload));
    follow(storage.voiceJournalShortcut.subscribe(reload));
    follow(storage.selectedDictationModelID.subscribe([this](const auto&) { lookForModels(); }));
    follow(storage.useSystemDefaultMicrophone.subscribe(reload));
    follow(storage.legacyMicrophonePriorityList.subscribe(reload));

    follow(m_overlay.phase.subscribe([this](DictationPhase phase) { phaseChanged(phase); }));
    follow(m_notices.undelivered.subscribe([this](const auto& text) { m_display.model().showNotice(text); }));
    follow(m_shortcuts.problems().subscribe([this](const auto& problems) {
        for (const auto& problem : problems)
            m_notices.show(problem.message);
    }));
    const auto quit = [resolve = m_quit.resolver()] { resolve({}); };
    follow(m_interrupts.interrupted.subscribe(quit));
    follow(m_interrupts.terminated.subscribe(quit));
    m_typing.setPasteIntoOwnWindow([this](const auto& text) { return m_setup.insert(text); });
}

Task<int> DesktopProgram::run()
{
    const bool isTheInstance = co_await becomeTheInstance();
    if (isTheInstance) {
        start();
        m_background.start(lookBack());
        co_await m_quit;
    }
    co_await shutDown();
    co_return exitSuccess;
}

Task<bool> DesktopProgram::becomeTheInstance()
{
    auto handler = [this](const InstanceRequest& request) { return m_remote.carryOut(request); };
    const auto claimed = co_await m_instance.claim(std::move(handler));
    if (claimed)
        co_return true;
    if (claimed.error().kind != InstanceError::Kind::taken) {
        m_base.terminal.line("Notice: " + userMessage(claimed.error()) +
                             "\nUntil then only the shortcut reaches Vocalith.");
        co_return true;
    }
    const InstanceRequest present{InstanceRequest::Action::present, {}};
    const auto presented = co_await m_instance.ask(present);
    m_base.terminal.line(presented ? "Vocalith is running already; its window comes forward."
                                   : userMessage(presented.error()));
    co_return false;
}

void DesktopProgram::start()
{
    m_base.storage.showProblems(m_notices);
    lookForModels();
    m_shortcuts.start();
    m_ports.askForConsent();
    m_base.history.start();
    m_tray.start();
    if (m_base.storage.isFirstLaunch.get())
        m_setup.show();
}

void DesktopProgram::comeForward()
{
    m_shortcuts.retry(); // another program may have let go of the keys meanwhile
    m_ports.askForConsent();
    m_setup.show();
}

/// What an earlier run has left, and what takes a while to find out.
Task<void> DesktopProgram::lookBack()
{
    InterruptedDictationRecovery recovery(m_recorder, m_base.storage, m_base.history);
    const auto interrupted = co_await recovery.recoverUnlessDictating(m_base.dictationLock);
    if (interrupted)
        m_notices.show(interruptedDictationNotice(*interrupted));
    auto microphones = co_await m_input.microphones();
    if (microphones) {
        m_microphones = std::move(*microphones);
        m_configuration.load();
    }
}

Task<void> DesktopProgram::shutDown()
{
    m_background.requestStop();
    m_overlay.close(); // first: a shortcut that is taken away counts as released
    m_suspension.suspendForGood();
    m_remote.close();
    co_await m_overlay.shutDown();
    co_await m_setup.shutDown();
    co_await m_tray.shutDown();
    co_await m_typing.shutDown();
    co_await m_display.shutDown();
    co_await m_background.untilEmpty();
    co_await m_base.history.shutDown();
}

Result<DictationConfiguration, std::string> DesktopProgram::configuration() const
{
    auto stored = storedDictationConfiguration(m_base.storage, m_models.defaultModel, m_microphones);
    stored.numberKeys = m_shortcuts.numberKeys();
    return stored;
}

/// Looks into their folder, once for all who want to know.
void DesktopProgram::lookForModels()
{
    m_models = m_base.models.survey();
    m_tray.showModels(m_models.rows);
    m_configuration.load();
}

void DesktopProgram::phaseChanged(DictationPhase phase)
{
    switch (phase) {
    case DictationPhase::recording:
        m_ports.renewConsent();
        if (const auto refusal = m_lock.take()) {
            m_notices.show(*refusal);
            m_notifier.escapeTriggered.emit();
        }
        break;
    case DictationPhase::processing: break;
    case DictationPhase::idle:
        m_lock.release();
        lookForModels(); // a better one may have come meanwhile
        break;
    }
}

Task<int> runDesktopProgram(DesktopFoundation foundation)
{
    const auto ports =
        co_await DesktopPorts::open(environmentVariable, foundation.paths, foundation.clock, foundation.log);
    DesktopProgram program(foundation, *ports);
    const int exitCode = co_await program.run();
    co_await ports->shutDown();
    co_return exitCode;
}

} // namespace vocalith
