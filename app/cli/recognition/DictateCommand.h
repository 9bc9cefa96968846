#pragma once

#include "app/cli/Options.h"
#include "app/cli/terminal/TerminalInput.h"
#include "app/cli/terminal/TerminalOverlay.h"
#include "base/Observable.h"
#include "base/Task.h"
#include "core/audio/AudioRecordingManager.h"

#include <memory>

namespace vocalith {

class ConfigurationManager;
class InterruptedDictationRecovery;
class PersistentAppStorage;
struct ShortcutNotifier;

/// `vocalith dictate`: drives one dictation through the same signals as a shortcut, with the terminal as its overlay.
class DictateCommand {
public:
    struct Services {
        ShortcutNotifier& shortcutNotifier;
        ConfigurationManager& configurationManager;
        AudioRecordingManager& audioRecordingManager;
        InterruptedDictationRecovery& recovery;
        PersistentAppStorage& appStorage;
        TerminalOverlay& overlay;
        Terminal& terminal;
        InterruptSignals& interrupts;
        std::filesystem::path lockFile; ///< held while a dictation runs: one at a time for each user
    };

    DictateCommand(DictateOptions options, Services services);

    /// Yields the exit code.
    Task<int> run();

private:
    Task<int> dictate();
    int complain(const std::string& text);
    int report(const DictationOutcome& outcome);
    int reportFailure(const dictation_outcome::Failed& failed);
    std::vector<Subscription> followRecording();

    const DictateOptions m_options;
    Services m_services;
    Subscription m_cancelling; ///< serves beyond the run: what is still tidied up then can be cut short
};

} // namespace vocalith
