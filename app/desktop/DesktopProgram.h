#pragma once

#include "app/cli/models/ModelReport.h"
#include "app/cli/terminal/TerminalInput.h"
#include "app/desktop/DictationLock.h"
#include "app/desktop/hosts/OverlayHost.h"
#include "app/desktop/hosts/SetupWindow.h"
#include "app/desktop/hosts/TrayHost.h"
#include "app/desktop/ports/DesktopPorts.h"
#include "app/overlay/DictationShortcuts.h"
#include "app/overlay/OverlayManager.h"
#include "app/overlay/RemoteControl.h"
#include "app/overlay/ShortcutSuspension.h"
#include "core/output/FocusedTextOutput.h"
#include "core/output/typing/TextTypingService.h"
#include "core/pipeline/TranscriptRules.h"
#include "core/session/ConfigurationManager.h"
#include "core/session/ShortcutUserFeedbackService.h"
#include "core/session/shortcuts/CarbonHotkeyManager.h"
#include "core/session/shortcuts/KeyboardShortcutManager.h"
#include "platform/freedesktop/DBusInstance.h"
#include "platform/freedesktop/DBusScreenLock.h"
#include "platform/freedesktop/DesktopNotices.h"
#include "platform/pulse/PulseAudioInput.h"
#include "platform/pulse/PulseSoundPlayer.h"
#include "platform/pulse/PulseSystemVolume.h"

#include <variant>

namespace vocalith {

class Terminal;
class TranscriptionServiceProvider;

/// What the desktop program shares with the commands.
struct DesktopFoundation {
    const AppPaths& paths;
    const std::filesystem::path& dictationLock;
    const LogService& log;
    Clock& clock;
    PersistentAppStorage& storage;
    HistoryService& history;
    Analytics& analytics;
    AppLauncher& appLauncher;
    Automations& automations;
    const ModelReport& models;
    const TranscriptionServiceProvider& engines;
    Terminal& terminal;
};

/// `vocalith run`: the resident program with its shortcuts, overlay and tray, every long-lived object of it, from the
/// bottom up. Needs a QApplication; main thread.
class DesktopProgram {
public:
    /// `ports` outlive it.
    DesktopProgram(const DesktopFoundation& foundation, DesktopPorts& ports);
    ~DesktopProgram();

    /// Until the user quits, or at once when the program runs already, which then comes forward. Yields the exit code.
    Task<int> run();

private:
    Task<bool> becomeTheInstance();
    void start();
    void comeForward();
    Task<void> lookBack();
    Task<void> shutDown();
    void connect();
    Result<DictationConfiguration, std::string> configuration() const;
    void phaseChanged(DictationPhase phase);
    void lookForModels();

    const DesktopFoundation m_base;
    DesktopPorts& m_ports;
    DesktopNotices m_notices{m_base.log.logger("notices")};
    PulseAudioInput m_input{m_base.log.logger("pulse")};
    PulseSoundPlayer m_sounds{m_base.log.logger("pulse")};
    PulseSystemVolume m_volume{m_base.paths.temporaryFolder / "muted-output", m_base.log.logger("pulse")};
    AudioRecordingManager m_recorder{m_input, m_base.storage, m_base.clock, m_base.paths.recordingsFolder,
                                     m_base.log.logger("audio")};

    TextTypingService m_typing{{m_ports.pasteboard(), m_ports.keyEvents(), m_ports.inputSources(),
                                m_ports.accessibility(), m_ports.focusedApp()},
                               m_base.storage,
                               m_base.clock,
                               m_base.analytics,
                               m_base.log.logger("typing")};
    FocusedTextOutput m_output{m_typing,     m_ports.keyEvents(),        m_ports.accessibility(), m_ports.focusedApp(),
                               m_base.clock, m_base.log.logger("output")};
    TranscriptRules m_rules{
        {m_base.storage, m_base.analytics, m_base.appLauncher, m_base.automations, m_notices, m_base.clock},
        m_base.log};
    TranscriptProcessingService m_pipeline{TranscriptProcessingService::defaultSteps(
        {m_output, m_base.storage, m_notices, m_rules, &m_base.history, &m_typing}, m_base.log)};
    TranscriptionSessionManager m_session;
    ConfigurationManager m_configuration{[this] { return configuration(); }, m_base.log.logger("configuration")};
    ShortcutUserFeedbackService m_feedback{m_sounds, m_volume, m_base.storage, m_base.log.logger("feedback")};

    ShortcutNotifier m_notifier;
    OverlayHost m_display{m_recorder, m_ports, m_base.storage, m_base.clock};
    OverlayManager m_overlay;
    CarbonHotkeyManager m_hotKeys{m_ports.hotKeys(), m_base.log.logger("shortcuts")};
    KeyboardShortcutManager m_shortcuts;
    DictationShortcuts m_dictationShortcuts{m_shortcuts, m_overlay, m_notifier}; ///< told of a phase before all others
    DBusScreenLock m_screenLock;
    RemoteControl m_remote{m_notifier, m_overlay, m_configuration, m_screenLock, [this] { comeForward(); }};
    ShortcutSuspension m_suspension{m_screenLock, m_overlay,
                                    [this](bool isSuspended) { m_shortcuts.setSuspended(isSuspended); }};
    SetupWindow m_setup;
    TrayHost m_tray;
    DictationLock m_lock;
    DBusInstance m_instance;
    InterruptSignals m_interrupts;

    std::vector<AudioDevice> m_microphones;
    ModelSurvey m_models;
    OneShot<std::monostate> m_quit;
    TaskScope m_background;
    std::vector<Subscription> m_subscriptions;
};

/// Decides what serves on this desktop and runs the program on it. Yields the exit code.
Task<int> runDesktopProgram(DesktopFoundation foundation);

} // namespace vocalith
