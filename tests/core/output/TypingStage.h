#pragma once

#include "core/output/typing/TextTypingService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeAccessibility.h"
#include "tests/support/FakeAnalytics.h"
#include "tests/support/FakeClock.h"
#include "tests/support/FakeFocusedApp.h"
#include "tests/support/FakeInputSources.h"
#include "tests/support/FakeKeyEvents.h"
#include "tests/support/FakePasteboard.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <optional>
#include <string>

namespace vocalith::test {

/// A desktop in memory with an application that pastes when it is told to by keys.
class TypingStage {
public:
    using Outcome = Result<TextTypingResult, TextTypingError>;
    using Reader = PasteboardFetch::Reader;

    TypingStage()
    {
        keys.whenPosted = [this](const FakeKeyEvents::Post& post) {
            if (post.events.front().virtualKeyCode == 55 && readsAfter)
                m_reading = clock.after(*readsAfter, [this] { document += pasteboard.readBy(reader); });
        };
        pasteboard.copyByOther("the user's");
    }
    ~TypingStage() { await(service.shutDown()); }

    /// Begins to type; `outcome` says how it went once it has ended.
    void type(const std::string& text)
    {
        outcome.reset();
        tasks.start(storeResult(service.typeText(text, false), outcome));
        advance(std::chrono::milliseconds(0));
    }
    void advance(std::chrono::milliseconds time)
    {
        drainMainThread();
        clock.advance(time);
        drainMainThread();
    }
    /// Types, and sees it through.
    Outcome typed(const std::string& text)
    {
        type(text);
        advance(std::chrono::seconds(3));
        return *outcome;
    }

    TemporaryFolder folder;
    FakeClock clock;
    FakePasteboard pasteboard;
    FakeKeyEvents keys;
    FakeInputSources layouts;
    FakeAccessibility accessibility;
    FakeFocusedApp focusedApp;
    FakeAnalytics analytics;
    RecordedLog log;
    PersistentAppStorage storage{folder / "settings.json", clock, Logger()};
    TextTypingService service{
        {pasteboard, keys, layouts, accessibility, focusedApp}, storage, clock, analytics, log.logger()};

    std::string document;                                                               ///< of the application
    std::optional<std::chrono::milliseconds> readsAfter = std::chrono::milliseconds(0); ///< never when absent
    Reader reader = Reader::focusedApplication;
    std::optional<Outcome> outcome;
    TaskScope tasks;

private:
    Timer m_reading;
};

} // namespace vocalith::test
