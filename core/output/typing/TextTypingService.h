#pragma once

#include "base/Log.h"
#include "core/output/typing/BorrowedPasteboard.h"
#include "core/output/typing/TextTypingError.h"
#include "core/output/typing/Turns.h"
#include "core/output/typing/USLayout.h"
#include "models/TextTypingMode.h"
#include "ports/FocusedApp.h"

#include <functional>
#include <string>

namespace vocalith {

class Analytics;
class InputSources;
class KeyEvents;
class PersistentAppStorage;

/// What the typing service needs of the desktop.
struct TextTypingPorts {
    Pasteboard& pasteboard;
    KeyEvents& keyEvents;
    InputSources& inputSources;
    Accessibility& accessibility;
    FocusedApp& focusedApp;
};

/// Puts text into whatever application has the keyboard focus, in the way that the user chose. Lives as long as the
/// program; main thread. Texts that are asked for at the same time are inserted one after the other. A stop before the
/// paste keystroke inserts nothing, and the clipboard is as it was.
class TextTypingService {
public:
    /// How long the keys of the shortcut itself may be held before the text is inserted in spite of them, in seconds.
    static constexpr double kModifierWait = 2;

    /// Inserts the text into the program's own focused field; false when none of its windows is active or none of their
    /// fields takes text. The clipboard is no way there: a toolkit that reads it waits for the thread that owns it.
    using PasteIntoOwnWindow = std::function<bool(const std::string& text)>;

    TextTypingService(TextTypingPorts ports, PersistentAppStorage& appStorage, Clock& clock,
                      Analytics& analyticsManager, Logger logger);

    /// Without one the program's windows are like anybody's.
    void setPasteIntoOwnWindow(PasteIntoOwnWindow paste) { m_pasteIntoOwnWindow = std::move(paste); }

    /// Inserts UTF-8 text at the caret, or in place of the selection; `preprocess` makes it fit for that before (see
    /// `insertableText`). Yields as soon as the focused application has it, or is known not to take it. When a paste
    /// fails after the text has gone to the clipboard, it stays there.
    Task<Result<TextTypingResult, TextTypingError>> typeText(std::string text, bool preprocess);
    /// Leaves a copy on the clipboard, for good; not while that carries another text.
    Task<Result<void, PasteboardError>> copy(std::string text);

    /// Puts clipboard and keyboard layout back at once where that is still due. Nobody may be typing any more.
    Task<void> shutDown();

private:
    using Outcome = Result<TextTypingResult, TextTypingError>;

    Task<Outcome> insert(std::string text);
    Task<Outcome> paste(std::string text, TextTypingMode mode);
    Task<Outcome> pasteByKeys(std::string text, TextTypingMode mode, bool isTerminal);
    Task<Outcome> simulateKeystrokes(std::string text);
    Task<Outcome> insertThroughAccessibility(std::string text);
    bool insertIntoOwnWindow(const std::optional<FocusedApplication>& focused, const std::string& text) const;
    Result<void, TextTypingError> postPasteKeystroke(TextTypingMode mode, bool isTerminal);
    void report(const Outcome& outcome) const;

    const TextTypingPorts m_ports;
    PersistentAppStorage& m_appStorage;
    Analytics& m_analyticsManager;
    const Logger m_logger;
    PasteIntoOwnWindow m_pasteIntoOwnWindow;
    Turns m_turns;
    BorrowedPasteboard m_pasteboard;
    USLayout m_usLayout;
};

/// The text as it can be inserted: valid UTF-8, line breaks as line feeds, and without the other control characters but
/// the tabulator: a terminal would obey them.
std::string insertableText(const std::string& text);

} // namespace vocalith
