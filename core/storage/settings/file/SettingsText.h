#pragma once

#include "base/Json.h"

#include <string>
#include <string_view>
#include <vector>

namespace vocalith {

/// What a settings file says.
struct SettingsText {
    Json entries = Json::object();
    bool isDamaged = false;        ///< the text is no JSON object: `entries` is what could be saved of it
    std::vector<std::string> lost; ///< the keys of a damaged text whose values could not be saved
};

/// Reads the text of a settings file. An empty one holds nothing. Of a damaged one every entry is read by itself, which
/// works where each entry has lines of its own, indented alike, as they are written.
SettingsText readSettingsText(std::string_view text);

std::string settingsText(const Json& entries);

} // namespace vocalith
