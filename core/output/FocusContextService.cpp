#include "core/output/FocusContextService.h"

#include "base/OneShot.h"

#include <functional>

namespace vocalith {

/// One question, for as long as somebody waits for the answer.
struct FocusContextService::Reading {
    FocusContext context;
    int open = 2; ///< of the two sources
    std::function<void()> whenComplete;
    bool isOver = false;

    void sourceDone()
    {
        if (--open == 0)
            whenComplete();
    }
};

Task<FocusContext> FocusContextService::read()
{
    OneShot<bool> ended;
    const auto resolve = ended.resolver();
    auto reading = std::make_shared<Reading>();
    reading->whenComplete = [resolve] { resolve(true); };
    const auto limit = m_clock.after(kTimeLimit, [resolve] { resolve(false); });
    m_readings.start(readApplication(reading));
    m_readings.start(readElement(reading));
    co_await ended;
    reading->isOver = true;
    co_return reading->context;
}

Task<void> FocusContextService::readApplication(std::shared_ptr<Reading> reading)
{
    auto focused = co_await m_focusedApp.focused();
    if (focused) {
        reading->context.applicationName = std::move(focused->name);
        reading->context.applicationIdentifier = std::move(focused->identifier);
        reading->context.windowTitle = std::move(focused->windowTitle);
    }
    reading->sourceDone();
}

Task<void> FocusContextService::readElement(std::shared_ptr<Reading> reading)
{
    const auto element = co_await m_accessibility.focusedElement();
    if (element && !element->isSecure() && !reading->isOver) {
        auto text = co_await element->text(kTextLimit);
        if (text) {
            reading->context.selectedText = std::move(text->selection);
            reading->context.textBeforeCursor = std::move(text->before);
            reading->context.textAfterCursor = std::move(text->after);
        }
    }
    if (element && !reading->isOver) {
        auto visible = co_await element->visibleText(kVisibleTextLimit);
        reading->context.visibleText = std::move(visible);
    }
    reading->sourceDone();
}

Task<void> FocusContextService::shutDown()
{
    m_readings.requestStop();
    co_await m_readings.untilEmpty();
}

} // namespace vocalith
