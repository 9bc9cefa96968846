#include "core/output/FocusedTextOutput.h"

#include "core/output/typing/TextTypingService.h"
#include "models/VirtualKeyCode.h"
#include "ports/FocusedApp.h"
#include "ports/KeyEvents.h"

namespace vocalith {
namespace {

using Delivered = Result<TextDestination, TextOutputError>;

constexpr const char* kIsOnClipboard =
    "Your text has been automatically copied to clipboard. You will still be able to paste it after transcription.";
constexpr const char* kNoAccessibility =
    "This way of inserting text needs the accessibility service of the desktop, which is not running.";

/// As far as the desktop says what has the focus.
bool isSame(const std::optional<FocusedApplication>& one, const std::optional<FocusedApplication>& other)
{
    return !one || !other || (one->processId == other->processId && one->identifier == other->identifier);
}

} // namespace

FocusedTextOutput::FocusedTextOutput(TextTypingService& typing, KeyEvents& keyEvents, Accessibility& accessibility,
                                     FocusedApp& focusedApp, Clock& clock, Logger logger)
    : m_typing(typing), m_keyEvents(keyEvents), m_focusedApp(focusedApp), m_insertion(accessibility, clock),
      m_logger(std::move(logger))
{}

Task<Delivered> FocusedTextOutput::deliver(std::string text, ActionMode action)
{
    switch (action) {
    case ActionMode::historyOnly: co_return TextDestination::nowhere;
    case ActionMode::copyToClipboard: co_return co_await copy(std::move(text));
    case ActionMode::autoInsert:
    case ActionMode::pasteAndSend: break;
    }
    const auto inserted = co_await insert(text);
    if (inserted && action == ActionMode::pasteAndSend)
        co_await send(std::move(text));
    co_return inserted;
}

Task<Delivered> FocusedTextOutput::copy(std::string text)
{
    const auto written = co_await m_typing.copy(std::move(text));
    if (!written)
        co_return failure(TextOutputError{userMessage(written.error()), {}});
    co_return TextDestination::clipboard;
}

Task<Delivered> FocusedTextOutput::insert(std::string text)
{
    const auto typed = co_await m_typing.typeText(text, true);
    if (typed && *typed == TextTypingResult::success)
        co_return TextDestination::application;
    TextOutputError error{typed ? kNoAccessibility : userMessage(typed.error()), {}};
    if (!typed && typed.error().kind == TextTypingError::Kind::cancelled)
        co_return failure(std::move(error));
    // Also where it is there already: without the mark that keeps it out of clipboard histories.
    const auto written = co_await m_typing.copy(std::move(text));
    if (written)
        error.rescue = kIsOnClipboard;
    else
        m_logger.error("Could not copy the text to the clipboard: " + userMessage(written.error()));
    co_return failure(std::move(error));
}

Task<void> FocusedTextOutput::send(std::string text)
{
    const auto stop = co_await currentStopToken();
    const auto target = co_await m_focusedApp.focused();
    co_await m_insertion.untilShown(std::move(text));
    if (stop.stop_requested())
        co_return;
    const bool areReleased = co_await m_keyEvents.modifiersReleased(TextTypingService::kModifierWait);
    if (stop.stop_requested())
        co_return;
    if (!areReleased)
        m_logger.warning("Pressing Enter while modifier keys are held");
    const auto focused = co_await m_focusedApp.focused();
    if (stop.stop_requested())
        co_return;
    if (!isSame(target, focused))
        m_logger.warning("Not pressing Enter: another application has the focus now");
    else
        pressReturn();
}

void FocusedTextOutput::pressReturn()
{
    const auto source = m_keyEvents.createSource(KeyEvents::SourceState::hidSystem);
    if (!source) {
        m_logger.error("Failed to create event source for Enter key press");
        return;
    }
    const auto down = source->createKeyEvent(virtual_key_code::returnKey, true);
    const auto up = source->createKeyEvent(virtual_key_code::returnKey, false);
    if (!down || !up) {
        m_logger.error("Failed to create Enter key events");
        return;
    }
    const auto posted = source->post({*down, *up});
    if (posted)
        m_logger.info("Successfully simulated Enter key press");
    else
        m_logger.error("Failed to post Enter key events: " + userMessage(posted.error()));
}

} // namespace vocalith
