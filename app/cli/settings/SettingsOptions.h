#pragma once

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace vocalith {

struct SettingsList {
    bool json = false;
    bool showSecrets = false;
    bool keysOnly = false; ///< one a line, for shell completion
    std::string wordsOf;   ///< a key: what can be typed for it, one a line, for shell completion
};

struct SettingsGet {
    std::string key;
    bool json = false;
    bool showSecrets = false;
};

struct SettingsSet {
    std::string key;
    std::string value; ///< "-" reads it from standard input
};

struct SettingsReset {
    std::vector<std::string> keys;
    bool all = false;
};

struct SettingsExport {
    std::filesystem::path file; ///< empty or "-" writes to standard output
    bool showSecrets = false;
    bool force = false; ///< replace a file that exists
};

struct SettingsImport {
    std::filesystem::path file; ///< "-" reads standard input
};

struct SettingsPath {};

/// `vocalith settings …`
using SettingsOptions =
    std::variant<SettingsList, SettingsGet, SettingsSet, SettingsReset, SettingsExport, SettingsImport, SettingsPath>;

} // namespace vocalith
