#pragma once

#include "base/Json.h"
#include "base/Result.h"

#include <string>
#include <utility>
#include <vector>

namespace vocalith {

class AnySetting;
class PersistentAppStorage;

/// What an export holds, and what the user should know about it.
// NOLINTNEXTLINE(bugprone-exception-escape): moving JSON throws nothing, whatever the check makes of its library
struct ExportedSettings {
    Json entries;
    std::vector<std::string> notices;
};

/// The user's choices that differ from the defaults or were made explicitly, by their keys, with the version of their
/// layout. Without `showSecrets` it holds no API keys, and no entries that this version does not know.
ExportedSettings exportSettings(const PersistentAppStorage& storage, bool showSecrets);

/// What an import will change. It refers to the settings.
struct SettingsToImport {
    std::vector<std::pair<AnySetting*, Json>> known;
    std::vector<std::pair<std::string, Json>> unknown;
    std::vector<std::string> notices;
};

/// Examines a whole exported file, in any layout that there ever was; the error lists everything that is wrong with it,
/// one sentence each. Changes nothing.
Result<SettingsToImport, std::vector<std::string>> examineImport(const PersistentAppStorage& storage,
                                                                 const std::string& text);

/// Stores all of it in one write.
void importSettings(PersistentAppStorage& storage, const SettingsToImport& settings);

} // namespace vocalith
