#include "core/output/typing/TextTypingService.h"

#include "core/output/typing/KeyCombination.h"
#include "core/output/typing/PasteKeystroke.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "models/ModifierFlags.h"
#include "ports/Analytics.h"

#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>

namespace vocalith {
namespace {

using Kind = TextTypingError::Kind;
using Outcome = Result<TextTypingResult, TextTypingError>;

Outcome cancelled()
{
    return failure(TextTypingError{Kind::cancelled, {}});
}

std::size_t characterCount(const std::string& text)
{
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

TextTypingError typingError(const KeyEventsError& error)
{
    if (error.kind == KeyEventsError::Kind::cancelled)
        return {Kind::cancelled, {}};
    if (error.kind == KeyEventsError::Kind::unavailable && error.detail.empty())
        return {Kind::couldNotCreateEventSource, {}};
    return {Kind::keysNotPosted, userMessage(error)};
}

TextTypingError typingError(const PasteboardError& error)
{
    if (error.kind == PasteboardError::Kind::cancelled)
        return {Kind::cancelled, {}};
    return {Kind::clipboardNotWritten, userMessage(error)};
}

} // namespace

TextTypingService::TextTypingService(TextTypingPorts ports, PersistentAppStorage& appStorage, Clock& clock,
                                     Analytics& analyticsManager, Logger logger)
    : m_ports(ports), m_appStorage(appStorage), m_analyticsManager(analyticsManager), m_logger(std::move(logger)),
      m_pasteboard(ports.pasteboard, clock, m_logger), m_usLayout(ports.inputSources, clock)
{}

Task<Outcome> TextTypingService::typeText(std::string text, bool preprocess)
{
    const auto turn = co_await m_turns.take();
    if (!turn)
        co_return cancelled();
    m_logger.info(
        fmt::format("📋 Attempting to paste text (length: {}, preprocess: {}", characterCount(text), preprocess));
    if (preprocess)
        text = insertableText(text);
    const auto outcome = co_await insert(std::move(text));
    report(outcome);
    co_return outcome;
}

void TextTypingService::report(const Outcome& outcome) const
{
    if (!outcome && outcome.error().kind == Kind::cancelled)
        return;
    if (!outcome) {
        m_logger.error("❌ Failed to paste text: " + userMessage(outcome.error()));
        m_logger.error("❌ Text input failed");
        m_analyticsManager.event("overlay_error_typing");
    } else if (*outcome == TextTypingResult::success) {
        m_logger.info("✅ Text pasted successfully");
    }
}

Task<Outcome> TextTypingService::insert(std::string text)
{
    if (text.empty())
        co_return TextTypingResult::success;
    const TextTypingMode mode = m_appStorage.textTypingMode.get();
    switch (mode) {
    case TextTypingMode::simulateKeystrokes: co_return co_await simulateKeystrokes(std::move(text));
    case TextTypingMode::accessibilityAPI: co_return co_await insertThroughAccessibility(std::move(text));
    default: co_return co_await paste(std::move(text), mode);
    }
}

Task<Outcome> TextTypingService::paste(std::string text, TextTypingMode mode)
{
    const auto stop = co_await currentStopToken();
    const auto focused = co_await m_ports.focusedApp.focused();
    if (stop.stop_requested())
        co_return cancelled();
    if (!m_ports.accessibility.isProcessTrusted())
        m_logger.info(mode == TextTypingMode::smartPaste ? "Using responder chain paste fallback for smart paste"
                                                         : "Using responder chain paste fallback");
    if (insertIntoOwnWindow(focused, text))
        co_return TextTypingResult::success;
    const bool areReleased = co_await m_ports.keyEvents.modifiersReleased(kModifierWait);
    if (stop.stop_requested())
        co_return cancelled();
    if (!areReleased)
        m_logger.warning("Pasting while modifier keys are held");
    co_return co_await pasteByKeys(std::move(text), mode, focused && focused->isTerminal);
}

Task<Outcome> TextTypingService::pasteByKeys(std::string text, TextTypingMode mode, bool isTerminal)
{
    using Fate = BorrowedPasteboard::Fate;
    const auto stop = co_await currentStopToken();
    const auto put = co_await m_pasteboard.put(std::move(text), mode == TextTypingMode::smartPaste);
    if (!put)
        co_return failure(typingError(put.error()));
    if (stop.stop_requested()) {
        m_pasteboard.giveBack();
        co_return cancelled();
    }
    const auto posted = postPasteKeystroke(mode, isTerminal);
    if (!posted) {
        m_pasteboard.leaveText();
        co_return failure(posted.error());
    }
    const Fate fate = co_await m_pasteboard.untilFetched();
    switch (fate) {
    case Fate::fetched: co_return TextTypingResult::success;
    case Fate::notFetched: co_return failure(TextTypingError{Kind::notFetched, {}});
    case Fate::taken: co_return failure(TextTypingError{Kind::clipboardTaken, {}});
    case Fate::cancelled: break;
    }
    co_return cancelled();
}

Result<void, TextTypingError> TextTypingService::postPasteKeystroke(TextTypingMode mode, bool isTerminal)
{
    // The user's layout has no say where the keys are read under another one.
    const bool isUSKeyboard = mode != TextTypingMode::smartPaste && m_ports.keyEvents.hasOwnUSLayout();
    const auto keystroke = pasteKeystroke(isUSKeyboard ? TextTypingMode::pasteStandard : mode);
    KeyCombination combination{keystroke->virtualKeyCode, KeyEvents::SourceState::hidSystem,
                               std::string(keystroke->label), isTerminal ? modifier_flags::shift : 0};
    if (mode == TextTypingMode::smartPaste) {
        combination.state = KeyEvents::SourceState::privateState;
        if (m_usLayout.select())
            m_logger.info("🔤 Switched to US QWERTY for smart paste");
    }
    const auto posted = postKeyCombination(m_ports.keyEvents, combination, m_logger);
    m_usLayout.switchBackLater();
    if (!posted)
        return failure(typingError(posted.error()));
    return {};
}

/// Nothing of the desktop is needed where the program itself has the focus.
bool TextTypingService::insertIntoOwnWindow(const std::optional<FocusedApplication>& focused,
                                            const std::string& text) const
{
    const bool isOthers = focused && focused->processId != 0 && focused->processId != ::getpid();
    return !isOthers && m_pasteIntoOwnWindow && m_pasteIntoOwnWindow(text);
}

Task<Outcome> TextTypingService::simulateKeystrokes(std::string text)
{
    m_logger.info(fmt::format("⌨️ Attempting keystroke simulation for {} characters", characterCount(text)));
    const auto stop = co_await currentStopToken();
    const auto source = m_ports.keyEvents.createSource(KeyEvents::SourceState::privateState);
    if (!source) {
        m_logger.error("❌ Failed to create event source for keystroke simulation");
        co_return failure(TextTypingError{Kind::couldNotCreateEventSource, {}});
    }
    const bool areReleased = co_await m_ports.keyEvents.modifiersReleased(kModifierWait);
    if (stop.stop_requested())
        co_return cancelled();
    if (!areReleased)
        m_logger.warning("Typing while modifier keys are held");
    const auto typed = co_await source->type(std::move(text));
    if (!typed)
        co_return failure(typingError(typed.error()));
    co_return TextTypingResult::success;
}

Task<Outcome> TextTypingService::insertThroughAccessibility(std::string text)
{
    if (!m_ports.accessibility.isProcessTrusted()) {
        m_logger.error("❌ Accessibility API typing requires accessibility permission");
        co_return TextTypingResult::permissionNeeded;
    }
    const auto stop = co_await currentStopToken();
    const auto element = co_await m_ports.accessibility.focusedElement();
    if (stop.stop_requested())
        co_return cancelled();
    if (!element) {
        m_logger.error("❌ Could not get focused UI element");
        co_return failure(TextTypingError{Kind::noFocusedElement, {}});
    }
    const int error = co_await element->setSelectedText(std::move(text));
    if (error != 0 && stop.stop_requested())
        co_return cancelled();
    if (error != 0) {
        m_logger.error(fmt::format("❌ Failed to set text via Accessibility API (error: {}", error));
        co_return failure(TextTypingError{Kind::elementRefused, std::to_string(error)});
    }
    m_logger.info("✅ Text inserted via Accessibility API");
    co_return TextTypingResult::success;
}

Task<Result<void, PasteboardError>> TextTypingService::copy(std::string text)
{
    const auto turn = co_await m_turns.take();
    if (!turn)
        co_return failure(PasteboardError{PasteboardError::Kind::cancelled});
    co_return co_await m_ports.pasteboard.writeText(std::move(text), false);
}

Task<void> TextTypingService::shutDown()
{
    m_usLayout.switchBack();
    co_await m_pasteboard.shutDown();
}

} // namespace vocalith
