#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "core/output/TextOutput.h"
#include "core/output/typing/InsertionWatch.h"

namespace vocalith {

class FocusedApp;
class KeyEvents;
class TextTypingService;

/// Hands text to the focused application, or to the clipboard. A text that could not be inserted is on the clipboard
/// afterwards. Lives as long as the program; main thread.
class FocusedTextOutput final : public TextOutput {
public:
    FocusedTextOutput(TextTypingService& typing, KeyEvents& keyEvents, Accessibility& accessibility,
                      FocusedApp& focusedApp, Clock& clock, Logger logger);

    /// A stop before the text has been inserted leaves application and clipboard alone, one after it the Return key.
    Task<Result<TextDestination, TextOutputError>> deliver(std::string text, ActionMode action) override;

private:
    Task<Result<TextDestination, TextOutputError>> copy(std::string text);
    Task<Result<TextDestination, TextOutputError>> insert(std::string text);
    Task<void> send(std::string text);
    void pressReturn();

    TextTypingService& m_typing;
    KeyEvents& m_keyEvents;
    FocusedApp& m_focusedApp;
    InsertionWatch m_insertion;
    const Logger m_logger;
};

} // namespace vocalith
