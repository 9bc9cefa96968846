#pragma once

#include "base/Observable.h"
#include "models/KeyboardShortcut.h"

#include <functional>
#include <string>
#include <vector>

namespace vocalith {

class PersistentAppStorage;

/// A shortcut of the settings and what it does, for people.
struct ConfiguredShortcut {
    KeyboardShortcut shortcut;
    std::string description;
    bool operator==(const ConfiguredShortcut&) const = default;
};

/// Every shortcut of the settings, with keys or without: the main prompt's, the other prompts', the additional ones and
/// the voice journal's, in this order. One whose id came before is left out.
std::vector<ConfiguredShortcut> configuredShortcuts(const PersistentAppStorage& storage);

/// Puts the shortcut in the place of the one with its id. False when the settings have none.
bool storeShortcut(PersistentAppStorage& storage, const KeyboardShortcut& shortcut);

/// `changed` is called after every change of a setting that holds shortcuts.
std::vector<Subscription> observeShortcuts(PersistentAppStorage& storage, const std::function<void()>& changed);

/// The keys without what makes no difference between two shortcuts, a lock for instance.
KeyboardShortcut::Keys comparable(KeyboardShortcut::Keys keys);
/// Whether there is anything to press.
bool areAssigned(const std::optional<KeyboardShortcut::Keys>& keys);

} // namespace vocalith
