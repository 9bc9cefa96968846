#pragma once

#include "base/Log.h"
#include "base/Observable.h"
#include "models/KeyboardShortcut.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

class PersistentAppStorage;

/// Lets the user press the keys of one shortcut and writes them to the settings. The window that has the focus hands
/// its key events over. Main thread; lives as long as the user edits the shortcut.
class KeyboardShortcutRecordingService {
public:
    /// `keyRequired`: modifier keys alone do not do, because this desktop cannot watch them.
    KeyboardShortcutRecordingService(const Uuid& shortcutID, PersistentAppStorage& appStorage, bool keyRequired,
                                     Logger logger);

    void startRecording();
    /// Ends the recording without a result; the shortcut stays as it was.
    void stopRecording();
    /// Takes the keys off the shortcut.
    void clear();

    /// A key that went down or came up in the window. `flags` are the modifiers that are held with it; a modifier key's
    /// own flag may be there or not. Keys that do not do are told in `errorMessage` and the recording goes on; it ends
    /// with a key that does, when modifier keys that do come up, or with Escape alone. False when nothing is recorded.
    bool handleKeyEvent(int virtualKeyCode, std::uint64_t flags, bool isDown);

    Observable<std::optional<KeyboardShortcut>> currentShortcut; ///< absent when the settings have none with the id
    Observable<std::optional<std::string>> errorMessage;         ///< for the user
    Observable<bool> recordingInProgress;

private:
    void handleModifier(std::uint64_t flag, std::uint64_t flags, bool isDown);
    void finish(const KeyboardShortcut::Keys& keys);
    std::optional<std::string> refusal(const KeyboardShortcut::Keys& keys) const;
    bool store(std::optional<KeyboardShortcut::Keys> keys);
    void reload();

    const Uuid m_shortcutID;
    PersistentAppStorage& m_appStorage;
    const bool m_keyRequired;
    const Logger m_logger;
    std::uint64_t m_modifiers = 0; ///< all that were held since all were up
    std::vector<Subscription> m_settings;
};

} // namespace vocalith
