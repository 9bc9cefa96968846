#pragma once

#include "app/cli/terminal/Terminal.h"
#include "base/OneShot.h"
#include "core/session/OverlayDisplay.h"
#include "ports/Notices.h"

#include <functional>
#include <vector>

namespace vocalith {

/// The overlay of the command line: one status line with state, time and level. Main thread.
class TerminalOverlay final : public OverlayDisplay {
public:
    using EndHandler = std::function<void(const DictationOutcome&)>;

    explicit TerminalOverlay(Terminal& terminal) : m_terminal(terminal) {}

    /// Told of the end of each dictation.
    void onDictationEnded(EndHandler handler) { m_onEnded = std::move(handler); }
    /// What the user can press, shown beside the level.
    void setKeyHint(std::string hint) { m_keyHint = std::move(hint); }
    void showLevel(const std::vector<float>& bars);
    void showElapsedTime(double seconds);

    void show(const OverlayVisibilityState& state) override;
    void showPrompt(const PromptChoice&) override {} // the command dictates into the journal
    void showIndicator(ProcessingIndicator::State indicator) override;
    void showProgress(double progress) override;
    void dictationEnded(const DictationOutcome& outcome) override;

private:
    void draw();
    std::string recordingLine() const;
    std::string workingLine() const;

    Terminal& m_terminal;
    EndHandler m_onEnded = [](const DictationOutcome&) {};
    bool m_isVisible = false;
    ProcessingIndicator::State m_indicator = ProcessingIndicator::State::starting;
    std::string m_keyHint;
    std::string m_bars;
    double m_elapsedTime = 0;
    double m_progress = 0;
};

/// Notices as lines on the terminal.
class TerminalNotices final : public Notices {
public:
    explicit TerminalNotices(Terminal& terminal) : m_terminal(terminal) {}

    void show(std::string_view text) override;

private:
    Terminal& m_terminal;
};

} // namespace vocalith
