#pragma once

#include "base/JsonFields.h"

#include <string>
#include <string_view>

/// What is exchanged, through a shared folder and shared settings, with the companion keyboard of a mobile device.
namespace vocalith {

enum class KeyboardSessionState { inactive, loading, active };
enum class KeyboardRecordingState { loading, recording, deactivated };

constexpr bool jsonKeyed(JsonType<KeyboardSessionState>)
{
    return true;
}
constexpr bool jsonKeyed(JsonType<KeyboardRecordingState>)
{
    return true;
}

struct KeyboardTranscription {
    std::string final; ///< the finished text that the keyboard inserts

    bool operator==(const KeyboardTranscription&) const = default;
};

constexpr auto jsonFields(JsonType<KeyboardTranscription>)
{
    return fields(field("final", &KeyboardTranscription::final));
}

/// The keys of the settings that are shared with the companion.
namespace UserDefaultsKeys {
inline constexpr std::string_view playSound = "playSound";
inline constexpr std::string_view useHapticFeedback = "useHapticFeedback";
inline constexpr std::string_view alwaysUseIPhoneMicrophone = "alwaysUseIPhoneMicrophone";
inline constexpr std::string_view dictationIsRecording = "dictationIsRecording";
inline constexpr std::string_view keyboardProxyExpandsContext = "keyboardProxyExpandsContext";
inline constexpr std::string_view useNewKeyboard = "useNewKeyboard";
inline constexpr std::string_view keyboardSuggestionsEnabled = "keyboardSuggestionsEnabled";
inline constexpr std::string_view keyboardAutoStartRecording = "keyboardAutoStartRecording";
inline constexpr std::string_view keyboardEditTextTipDismissed = "keyboardEditTextTipDismissed";
inline constexpr std::string_view effectiveInterfaceLanguage = "effectiveInterfaceLanguage";
inline constexpr std::string_view keyboardAutoHideAfterDictation = "keyboardAutoHideAfterDictation";
} // namespace UserDefaultsKeys

namespace KeyboardConstants {
inline constexpr std::string_view appGroupIdentifier = "group.vocalith.shared";
inline constexpr std::string_view sharedAudioFolder = "SharedAudio";
} // namespace KeyboardConstants

} // namespace vocalith
