#pragma once

#include "base/Json.h"

#include <string>
#include <vector>

namespace vocalith {

class PersistentAppStorage;

/// One row of `vocalith settings list`.
struct SettingRow {
    std::string key;
    std::string text; ///< the value as people type it
    Json value;
    std::string type; ///< which values there are, for people
    bool isDefault = true;
    bool isReadable = true; ///< false when what is stored cannot be read, or not all of it
    bool isKnown = true;    ///< false for an entry of another version of the program
};

/// Every setting in its order, then the entries that this version does not know. Without `showSecrets` API keys are
/// masked, and the entries that it does not know, which may hold any, are not shown.
std::vector<SettingRow> settingRows(const PersistentAppStorage& storage, bool showSecrets);

std::string settingsTable(const std::vector<SettingRow>& rows);
Json settingsJson(const std::vector<SettingRow>& rows);

} // namespace vocalith
