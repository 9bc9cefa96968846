#include "core/session/shortcuts/KeyboardShortcutRecordingService.h"

#include "core/session/shortcuts/ConfiguredShortcuts.h"
#include "core/session/shortcuts/SystemShortcuts.h"
#include "models/KeyboardShortcutText.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"

#include <algorithm>
#include <utility>

namespace vocalith {
namespace {

constexpr const char* kNothingRecorded = "No shortcut was recorded. Please try again.";
constexpr const char* kKeyMissing = "Shortcut must include at least one key in addition to modifier keys.";
constexpr const char* kModifierMissing =
    "Shortcut must include at least one modifier key (⌘, ⌥, ⌃, ⇧) unless you're using a function key.";
constexpr const char* kUsedBySystem =
    "This shortcut is already used by the system. Using it may conflict with system operations.";
constexpr const char* kUsedByApp = "This key combination is already used by the app. Please use a different shortcut.";

} // namespace

KeyboardShortcutRecordingService::KeyboardShortcutRecordingService(const Uuid& shortcutID,
                                                                   PersistentAppStorage& appStorage, bool keyRequired,
                                                                   Logger logger)
    : m_shortcutID(shortcutID), m_appStorage(appStorage), m_keyRequired(keyRequired), m_logger(std::move(logger)),
      m_settings(observeShortcuts(appStorage, [this] { reload(); }))
{
    reload();
}

void KeyboardShortcutRecordingService::startRecording()
{
    m_modifiers = 0;
    errorMessage.set(std::nullopt);
    recordingInProgress.set(true);
}

void KeyboardShortcutRecordingService::stopRecording()
{
    if (!recordingInProgress.get())
        return;
    recordingInProgress.set(false);
    // Why the last keys did not do says more.
    if (!errorMessage.get())
        errorMessage.set(kNothingRecorded);
}

void KeyboardShortcutRecordingService::clear()
{
    recordingInProgress.set(false);
    errorMessage.set(std::nullopt);
    store(std::nullopt);
}

bool KeyboardShortcutRecordingService::handleKeyEvent(int virtualKeyCode, std::uint64_t flags, bool isDown)
{
    if (!recordingInProgress.get())
        return false;
    flags &= modifier_flags::ofShortcuts;
    if (const auto flag = modifierFlag(virtualKeyCode)) {
        handleModifier(flag & modifier_flags::ofShortcuts, flags, isDown);
        return true;
    }
    if (!isDown)
        return true;
    m_modifiers = 0; // they were pressed for this key
    if (virtualKeyCode == virtual_key_code::escape && flags == 0)
        stopRecording();
    else
        finish({flags, virtualKeyCode});
    return true;
}

void KeyboardShortcutRecordingService::handleModifier(std::uint64_t flag, std::uint64_t flags, bool isDown)
{
    if (isDown) {
        m_modifiers |= flags | flag;
        return;
    }
    const bool allAreUp = (flags & ~flag) == 0;
    if (!allAreUp)
        return;
    if (const auto modifiers = std::exchange(m_modifiers, 0))
        finish({modifiers, std::nullopt});
}

void KeyboardShortcutRecordingService::finish(const KeyboardShortcut::Keys& keys)
{
    if (auto reason = refusal(keys)) {
        errorMessage.set(std::move(reason));
        return;
    }
    recordingInProgress.set(false);
    if (!store(keys))
        errorMessage.set(kNothingRecorded);
    else if (isSystemShortcut(keys))
        errorMessage.set(kUsedBySystem); // a warning: the desktop will say if it does not give them away
    else
        errorMessage.set(std::nullopt);
}

std::optional<std::string> KeyboardShortcutRecordingService::refusal(const KeyboardShortcut::Keys& keys) const
{
    if (m_keyRequired && !keys.keyCode)
        return kKeyMissing;
    if (keys.keyCode && keys.rawFlags == 0 && !isFunctionKey(*keys.keyCode))
        return kModifierMissing;
    const auto all = configuredShortcuts(m_appStorage);
    const bool isUsed = std::ranges::any_of(all, [&](const ConfiguredShortcut& other) {
        return other.shortcut.id != m_shortcutID && other.shortcut.keys && comparable(*other.shortcut.keys) == keys;
    });
    return isUsed ? std::optional<std::string>(kUsedByApp) : std::nullopt;
}

bool KeyboardShortcutRecordingService::store(std::optional<KeyboardShortcut::Keys> keys)
{
    auto shortcut = currentShortcut.get();
    if (!shortcut) {
        m_logger.warning("The settings have no shortcut " + m_shortcutID.toString());
        return false;
    }
    shortcut->keys = keys;
    storeShortcut(m_appStorage, *shortcut);
    m_logger.info("Shortcut " + m_shortcutID.toString() + ": " + (keys ? toString(*keys) : std::string("no keys")));
    return true;
}

void KeyboardShortcutRecordingService::reload()
{
    const auto all = configuredShortcuts(m_appStorage);
    const auto found = std::ranges::find(all, m_shortcutID, [](const auto& each) { return each.shortcut.id; });
    currentShortcut.set(found == all.end() ? std::nullopt : std::optional(found->shortcut));
}

} // namespace vocalith
