#pragma once

#include "core/storage/AppPaths.h"

#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// The language tag (BCP 47) that the text is meant to be, in the usual letters: "en-US" for "en_us". Nothing for a
/// text that cannot be one.
std::optional<std::string> languageTag(const std::string& text);

/// The user's locale, as the environment tells it, when its language is among `languages` (ISO 639 codes), else
/// "en-US".
std::string environmentLocale(const EnvironmentLookup& environment, const std::vector<std::string>& languages);

} // namespace vocalith
