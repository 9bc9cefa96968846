#pragma once

#include "base/JsonFields.h"
#include "base/Uuid.h"

#include <string>
#include <variant>
#include <vector>

namespace vocalith {

namespace quick_command_action {

struct OpenURL {
    std::string url;
    bool operator==(const OpenURL&) const = default;
};
struct LaunchApp {
    std::string bundleID; ///< the identifier of a desktop entry, "org.mozilla.firefox" for instance
    bool operator==(const LaunchApp&) const = default;
};
struct RunShortcut {
    std::string name; ///< of an automation of the user's
    bool operator==(const RunShortcut&) const = default;
};

constexpr auto jsonFields(JsonType<OpenURL>)
{
    return fields(field("_0", &OpenURL::url));
}
constexpr auto jsonFields(JsonType<LaunchApp>)
{
    return fields(field("bundleID", &LaunchApp::bundleID));
}
constexpr auto jsonFields(JsonType<RunShortcut>)
{
    return fields(field("name", &RunShortcut::name));
}

} // namespace quick_command_action

/// What is done when one of a command's phrases was said.
using QuickCommandAction =
    std::variant<quick_command_action::OpenURL, quick_command_action::LaunchApp, quick_command_action::RunShortcut>;

constexpr auto jsonUnion(JsonType<QuickCommandAction>)
{
    return taggedUnion(labelled("openURL"), labelled("launchApp"), labelled("runShortcut"));
}

/// A spoken phrase that does something in place of being inserted.
struct QuickCommandDefinition {
    Uuid id;
    std::vector<std::string> triggerPhrases;
    QuickCommandAction action;
    bool isEnabled = true;

    bool operator==(const QuickCommandDefinition&) const = default;
};

constexpr auto jsonFields(JsonType<QuickCommandDefinition>)
{
    using Definition = QuickCommandDefinition;
    return fields(field("id", &Definition::id), field("triggerPhrases", &Definition::triggerPhrases),
                  field("action", &Definition::action), field("isEnabled", &Definition::isEnabled));
}

} // namespace vocalith
