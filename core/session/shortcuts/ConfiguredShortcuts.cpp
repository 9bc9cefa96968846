#include "core/session/shortcuts/ConfiguredShortcuts.h"

#include "core/storage/settings/PersistentAppStorage.h"
#include "models/ModifierFlags.h"

#include <algorithm>

namespace vocalith {
namespace {

std::string describe(const AIPrompt& prompt)
{
    return prompt.name.empty() ? "Dictate" : "Dictate: " + prompt.name;
}

} // namespace

std::vector<ConfiguredShortcut> configuredShortcuts(const PersistentAppStorage& storage)
{
    std::vector<ConfiguredShortcut> found;
    const auto add = [&found](const KeyboardShortcut& shortcut, std::string description) {
        if (std::ranges::none_of(found, [&](const auto& known) { return known.shortcut.id == shortcut.id; }))
            found.push_back({shortcut, std::move(description)});
    };
    add(storage.mainPrompt.get().shortcut, describe(storage.mainPrompt.get()));
    for (const auto& prompt : storage.aiPrompts.get())
        add(prompt.shortcut, describe(prompt));
    for (const auto& shortcut : storage.additionalShortcuts.get())
        add(shortcut, "Dictate");
    add(storage.voiceJournalShortcut.get(), "Dictate into the voice journal");
    return found;
}

bool storeShortcut(PersistentAppStorage& storage, const KeyboardShortcut& shortcut)
{
    if (auto prompt = storage.mainPrompt.get(); prompt.shortcut.id == shortcut.id) {
        prompt.shortcut = shortcut;
        storage.mainPrompt.set(std::move(prompt));
        return true;
    }
    auto prompts = storage.aiPrompts.get();
    const auto prompt = std::ranges::find(prompts, shortcut.id, [](const auto& each) { return each.shortcut.id; });
    if (prompt != prompts.end()) {
        prompt->shortcut = shortcut;
        storage.aiPrompts.set(std::move(prompts));
        return true;
    }
    auto additional = storage.additionalShortcuts.get();
    const auto other = std::ranges::find(additional, shortcut.id, &KeyboardShortcut::id);
    if (other != additional.end()) {
        *other = shortcut;
        storage.additionalShortcuts.set(std::move(additional));
        return true;
    }
    if (storage.voiceJournalShortcut.get().id != shortcut.id)
        return false;
    storage.voiceJournalShortcut.set(shortcut);
    return true;
}

std::vector<Subscription> observeShortcuts(PersistentAppStorage& storage, const std::function<void()>& changed)
{
    const auto tell = [changed](const auto&) { changed(); };
    std::vector<Subscription> subscriptions;
    subscriptions.push_back(storage.mainPrompt.subscribe(tell));
    subscriptions.push_back(storage.aiPrompts.subscribe(tell));
    subscriptions.push_back(storage.additionalShortcuts.subscribe(tell));
    subscriptions.push_back(storage.voiceJournalShortcut.subscribe(tell));
    return subscriptions;
}

KeyboardShortcut::Keys comparable(KeyboardShortcut::Keys keys)
{
    keys.rawFlags &= modifier_flags::ofShortcuts;
    return keys;
}

bool areAssigned(const std::optional<KeyboardShortcut::Keys>& keys)
{
    return keys && comparable(*keys) != KeyboardShortcut::Keys{};
}

} // namespace vocalith
