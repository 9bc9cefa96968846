#pragma once

#include "base/Clock.h"
#include "base/TaskScope.h"
#include "ports/FocusedApp.h"

#include <chrono>
#include <memory>
#include <string>

namespace vocalith {

/// What the user works in and on, in UTF-8; a text is empty when it is not known.
struct FocusContext {
    std::string applicationName;       ///< for people
    std::string applicationIdentifier; ///< its desktop entry, or its window class
    std::string windowTitle;
    std::string visibleText; ///< of the window
    std::string selectedText;
    std::string textBeforeCursor;
    std::string textAfterCursor;
    bool operator==(const FocusContext&) const = default;
};

/// Reads the context of the focused application, for prompts. A field that hides what is typed is never read. Lives as
/// long as the program; main thread.
class FocusContextService {
public:
    /// After this it yields what is known by then: no application that hangs keeps a dictation waiting.
    static constexpr std::chrono::milliseconds kTimeLimit{200};
    /// Characters (code points) of the selection, of the text before it and of the text after it, each.
    static constexpr int kTextLimit = 2000;
    static constexpr int kVisibleTextLimit = 8000;

    FocusContextService(FocusedApp& focusedApp, Accessibility& accessibility, Clock& clock)
        : m_focusedApp(focusedApp), m_accessibility(accessibility), m_clock(clock)
    {}

    /// A stop yields what is known by then, too.
    Task<FocusContext> read();
    /// Nobody may be reading any more.
    Task<void> shutDown();

private:
    struct Reading;
    Task<void> readApplication(std::shared_ptr<Reading> reading);
    Task<void> readElement(std::shared_ptr<Reading> reading);

    FocusedApp& m_focusedApp;
    Accessibility& m_accessibility;
    Clock& m_clock;
    TaskScope m_readings; ///< those that came too late may still run
};

} // namespace vocalith
