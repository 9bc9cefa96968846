#pragma once

#include "base/JsonFields.h"
#include "base/Uuid.h"

#include <cstdint>
#include <optional>

namespace vocalith {

/// How pressing and releasing a shortcut starts and stops a dictation.
enum class ActivationMode { automatic, toggle, pushToTalk, doubleTap };

/// A global shortcut.
struct KeyboardShortcut {
    struct Keys {
        std::uint64_t rawFlags = 0; ///< modifier keys, in the device-independent modifier-flag encoding
        /// The virtual key code of the key that is no modifier; absent for a shortcut of modifiers only.
        std::optional<int> keyCode;

        bool operator==(const Keys&) const = default;
    };

    Uuid id;
    std::optional<Keys> keys;   ///< absent when no keys are assigned
    bool visionEnabled = false; ///< requests made through this shortcut carry a picture of the screen
    ActivationMode activationMode = ActivationMode::automatic;

    bool operator==(const KeyboardShortcut&) const = default;
};

constexpr auto jsonFields(JsonType<KeyboardShortcut::Keys>)
{
    using Keys = KeyboardShortcut::Keys;
    return fields(field("rawFlags", &Keys::rawFlags), field("keyCode", &Keys::keyCode));
}

constexpr auto jsonFields(JsonType<KeyboardShortcut>)
{
    return fields(field("id", &KeyboardShortcut::id), field("keys", &KeyboardShortcut::keys),
                  field("visionEnabled", &KeyboardShortcut::visionEnabled),
                  field("activationMode", &KeyboardShortcut::activationMode));
}

} // namespace vocalith
