#pragma once

#include "base/Json.h"

namespace vocalith {

/// The layout of the settings file that this program writes; its number is kept in the file.
inline constexpr int kSettingsVersion = 1;
inline constexpr const char* kSettingsVersionKey = "settingsVersion";

/// Brings the entries of an older layout to the current one, version by version, and says whether there was anything to
/// do. A newer layout stays as it is.
bool migrateSettings(Json& entries);

} // namespace vocalith
