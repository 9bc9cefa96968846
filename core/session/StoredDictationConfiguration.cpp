#include "core/session/StoredDictationConfiguration.h"

#include "core/storage/settings/PersistentAppStorage.h"

#include <algorithm>

namespace vocalith {
namespace {

std::string chosenMicrophone(const PersistentAppStorage& appStorage, const std::vector<AudioDevice>& microphones)
{
    if (appStorage.useSystemDefaultMicrophone.get())
        return {};
    for (const auto& preferred : appStorage.legacyMicrophonePriorityList.get()) {
        if (std::ranges::find(microphones, preferred.uid, &AudioDevice::id) != microphones.end())
            return preferred.uid;
    }
    return {};
}

} // namespace

DictationConfiguration storedDictationConfiguration(const PersistentAppStorage& appStorage,
                                                    TranscriptionModelID defaultModel,
                                                    const std::vector<AudioDevice>& microphones)
{
    DictationConfiguration configuration;
    const auto add = [&configuration](const Uuid& id, const OverlayActivationMode& mode) {
        const int index = static_cast<int>(configuration.shortcuts.size());
        configuration.shortcuts.push_back({id, {index, mode}});
    };
    const AIPrompt mainPrompt = appStorage.mainPrompt.get();
    configuration.prompts.push_back(mainPrompt);
    for (const auto& prompt : appStorage.aiPrompts.get())
        configuration.prompts.push_back(prompt);
    // What was chosen in the menu, or by a number, is what the main shortcut is for until another is chosen.
    const auto chosen = std::ranges::find(configuration.prompts, appStorage.storedPromptID.get(),
                                          [](const AIPrompt& prompt) { return std::optional(prompt.id); });
    const AIPrompt current = chosen == configuration.prompts.end() ? mainPrompt : *chosen;
    add(mainPrompt.shortcut.id, current);
    for (const auto& shortcut : appStorage.additionalShortcuts.get())
        add(shortcut.id, current);
    for (const auto& prompt : appStorage.aiPrompts.get())
        add(prompt.shortcut.id, prompt);
    add(appStorage.voiceJournalShortcut.get().id, VoiceJournal{});
    for (const auto& prompt : configuration.prompts)
        add(prompt.id, prompt);

    configuration.defaultModel = std::move(defaultModel);
    configuration.microphoneId = chosenMicrophone(appStorage, microphones);
    return configuration;
}

} // namespace vocalith
