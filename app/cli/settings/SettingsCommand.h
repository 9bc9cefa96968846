#pragma once

#include "app/cli/settings/SettingsOptions.h"
#include "base/Result.h"

#include <string>

namespace vocalith {

class AnySetting;
class ModelReport;
class PersistentAppStorage;
class Terminal;

/// `vocalith settings`: shows and changes the settings. Values go to standard output, everything else to standard
/// error. Main thread.
class SettingsCommand {
public:
    SettingsCommand(PersistentAppStorage& storage, const ModelReport& models, Terminal& terminal);

    /// Yields the exit code.
    int run(const SettingsOptions& options);

private:
    int run(const SettingsList& options);
    int run(const SettingsGet& options);
    int run(const SettingsSet& options);
    int run(const SettingsReset& options);
    int run(const SettingsExport& options);
    int run(const SettingsImport& options);
    int run(const SettingsPath& options);

    /// The setting, or nullptr after having said that there is none.
    AnySetting* find(const std::string& key);
    /// The same for one that the user may change.
    AnySetting* findChoice(const std::string& key);
    Result<std::string, std::string> model(const std::string& text) const;
    Result<void, std::string> change(AnySetting& setting, std::string text);
    int print(const std::string& text);
    int stored();
    int complain(const std::string& text, int exitCode);

    PersistentAppStorage& m_storage;
    const ModelReport& m_models;
    Terminal& m_terminal;
};

} // namespace vocalith
