#pragma once

namespace vocalith {

/// The groups of tools that a prompt can enable.
enum class AIToolSetID {
    systemCommunication,
    searchGoogle,
    launchApp,
    closeApps,
    askChatGPT,
    askClaude,
    searchYoutube,
    openURL,
    appleShortcuts,
    shellCommand,
    simulateKeypress,
};

} // namespace vocalith
