#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// Which values of its type a setting can have. A stored value that breaks the rule counts as one that cannot be read.
template <class T>
struct SettingRule {
    /// The value as it is kept, or nothing when the setting cannot have it. Without one every value will do.
    std::function<std::optional<T>(const T& value)> kept;
    std::string description;        ///< for people, in place of the type's own
    std::vector<std::string> words; ///< what can be typed, when that can be listed
    bool isChoice = true;           ///< false for what the program notes for itself
};

template <class T>
SettingRule<T> notedByTheProgram()
{
    SettingRule<T> rule;
    rule.isChoice = false;
    return rule;
}

SettingRule<int> between(int lowest, int highest);
SettingRule<float> between(float lowest, float highest);
SettingRule<int> atLeast(int lowest);
/// The code of a `WhisperLanguage`; its English name is taken too.
SettingRule<std::string> whisperLanguageCode();
/// A language tag (BCP 47) such as "en-US".
SettingRule<std::string> locale();

} // namespace vocalith
