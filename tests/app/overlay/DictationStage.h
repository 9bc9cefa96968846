#pragma once

#include "app/overlay/OverlayManager.h"
#include "core/output/TextOutput.h"
#include "core/session/ConfigurationManager.h"
#include "core/session/ShortcutUserFeedbackService.h"
#include "core/storage/history/HistoryService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "ports/SoundPlayer.h"
#include "ports/SystemVolume.h"
#include "tests/support/DesktopRules.h"
#include "tests/support/FakeAnalytics.h"
#include "tests/support/FakeAudioInput.h"
#include "tests/support/FakeClock.h"
#include "tests/support/FakePasteboard.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/RecordedNotices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace vocalith::test {

/// What the scripted engine is told to do, and what was asked of it.
struct EngineScript {
    std::string text = "hello world";
    std::optional<TranscriptionError> factoryError;
    std::optional<TranscriptionError> startError;
    std::optional<TranscriptionError> transcribeError;
    bool holdsStart = false;
    bool holdsTranscription = false;

    std::vector<TranscriptionModelID> madeFor;
    int starts = 0;
    std::vector<std::filesystem::path> transcribed;
    Signal<TranscriptionState>* textEvents = nullptr; ///< of the engine that lives now
};

class RecordedDisplay final : public OverlayDisplay {
public:
    void show(const OverlayVisibilityState& state) override { states.push_back(state); }
    void showPrompt(const PromptChoice& choice) override { prompts.push_back(choice); }
    void showIndicator(ProcessingIndicator::State indicator) override { indicators.push_back(indicator); }
    void showProgress(double) override {}
    void dictationEnded(const DictationOutcome& outcome) override { outcomes.push_back(outcome); }

    bool isVisible() const { return !states.empty() && std::holds_alternative<OverlayState>(states.back()); }

    std::vector<OverlayVisibilityState> states;
    std::vector<PromptChoice> prompts;
    std::vector<ProcessingIndicator::State> indicators;
    std::vector<DictationOutcome> outcomes;
};

class RecordedTextOutput final : public TextOutput {
public:
    explicit RecordedTextOutput(Clock& clock) : m_clock(clock) {}
    Task<Result<TextDestination, TextOutputError>> deliver(std::string text, ActionMode action) override;

    bool holds = false; ///< waits until the dictation is cancelled
    int asked = 0;
    std::optional<TextOutputError> error;
    std::vector<std::string> delivered;

private:
    Clock& m_clock;
};

class RecordedSounds final : public SoundPlayer, public SystemVolume {
public:
    Result<void, std::string> play(Sound sound) override
    {
        ++(sound == Sound::recordingStarted ? playedAtStart : played);
        if (!error.empty())
            return failure(error);
        return {};
    }
    void stop() override { ++stopped; }
    void mute() override { ++muted; }
    void restore() override { ++restored; }

    std::string error;
    int playedAtStart = 0;
    int played = 0;
    int stopped = 0;
    int muted = 0;
    int restored = 0;
};

/// A whole dictation with everything real but the audio, the engine and the eyes.
class DictationStage {
public:
    DictationStage();
    ~DictationStage();

    void loadConfiguration() { EXPECT_TRUE(configuration.load()); }
    void press(const Uuid& shortcut) { notifier.state.set(keyboard_activation::Activated{shortcut}); }
    void release(const Uuid& shortcut) { notifier.state.set(keyboard_activation::Completed{shortcut}); }
    void escape() { notifier.escapeTriggered.emit(); }
    void speak(std::chrono::milliseconds length);
    /// Handles what is due until the next dictation has ended that was not waited for yet.
    const DictationOutcome& waitForOutcome();
    std::size_t recordingsOnDisk() const;
    /// What the history has, the newest first.
    std::vector<HistoryEntry> historyEntries();

    const Uuid journalShortcut = Uuid::random();
    const Uuid promptShortcut = Uuid::random();
    AIPrompt prompt;
    std::vector<AIPrompt> numberedPrompts; ///< to be set before the configuration is loaded
    bool forgetPromptShortcut = false;     ///< so that it is not in the configuration that is loaded next

    TemporaryFolder folder;
    RecordedLog log;
    FakeClock clock;
    FakeAudioInput input;
    FakeAnalytics analytics;
    EngineScript engine;
    RecordedDisplay display;
    RecordedNotices notices;
    RecordedSounds sounds;
    RecordedTextOutput output{clock};
    FakePasteboard pasteboard;
    ShortcutNotifier notifier;
    LogService stepLog = LogService::toListener([](LogLevel, std::string_view, std::string_view) {});
    PersistentAppStorage storage{folder / "settings.json", clock, log.logger()};
    HistoryService history{{folder / "History", folder / "VocalithRecordings", folder / "Cache" / "history.sqlite"},
                           storage,
                           clock,
                           log.logger()};
    AudioRecordingManager recorder{input, storage, clock, folder / "VocalithRecordings", log.logger()};
    DesktopRules desktop{storage, notices, clock, stepLog};
    TranscriptProcessingService pipeline{
        TranscriptProcessingService::defaultSteps({output, storage, notices, desktop.rules, &history}, stepLog)};
    TranscriptionSessionManager session;
    ConfigurationManager configuration;
    ShortcutUserFeedbackService feedback{sounds, sounds, storage, log.logger()};
    OverlayManager overlay;

private:
    std::size_t m_awaitedOutcomes = 0;
};

} // namespace vocalith::test
