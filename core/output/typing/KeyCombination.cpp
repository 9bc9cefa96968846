#include "core/output/typing/KeyCombination.h"

#include "base/Log.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"

namespace vocalith {

Result<void, KeyEventsError> postKeyCombination(KeyEvents& keyEvents, const KeyCombination& combination,
                                                const Logger& logger)
{
    using Kind = KeyEventsError::Kind;
    const auto source = keyEvents.createSource(combination.state);
    if (!source) {
        logger.error("❌ Failed to create event source for " + combination.label);
        return failure(KeyEventsError{Kind::unavailable, {}});
    }
    auto commandDown = source->createKeyEvent(virtual_key_code::command, true);
    auto keyDown = source->createKeyEvent(combination.virtualKeyCode, true);
    auto keyUp = source->createKeyEvent(combination.virtualKeyCode, false);
    const auto commandUp = source->createKeyEvent(virtual_key_code::command, false);
    if (!commandDown || !keyDown || !keyUp || !commandUp) {
        logger.error("❌ Failed to create one or more events for " + combination.label);
        return failure(KeyEventsError{Kind::failed, "The keyboard lacks a key for " + combination.label + "."});
    }
    commandDown->flags |= modifier_flags::command;
    keyDown->flags |= modifier_flags::command | combination.moreFlags;
    keyUp->flags |= modifier_flags::command | combination.moreFlags;
    auto posted = source->post({*commandDown, *keyDown, *keyUp, *commandUp});
    if (!posted)
        logger.error("❌ Failed to post " + combination.label + ": " + userMessage(posted.error()));
    return posted;
}

} // namespace vocalith
