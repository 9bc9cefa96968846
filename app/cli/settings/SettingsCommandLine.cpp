#include "app/cli/settings/SettingsCommandLine.h"

#include <CLI/CLI.hpp>

#include <utility>

namespace vocalith {
namespace {

constexpr const char* kFooter = R"(
Examples:
  vocalith settings list
  vocalith settings set historyStoragePolicy oneYear
  vocalith settings get wordReplacements > replacements.json
  vocalith settings set wordReplacements - < replacements.json
  vocalith settings export --show-secrets backup.json

Simple values are typed as they are: true, 4, oneYear, 2026-03-01; "none" clears what may be absent. Others are JSON.
API keys are shown as "••••1234". What is set with such a key, or without one, keeps the key that is there.)";

constexpr const char* kSecrets = "Show API keys, and export them";

} // namespace

struct SettingsCommandLine::Parts {
    CLI::App* command = nullptr;
    std::vector<std::pair<CLI::App*, std::function<SettingsOptions()>>> actions;
    SettingsList list;
    SettingsGet get;
    SettingsSet set;
    SettingsReset reset;
    SettingsExport exported;
    SettingsImport imported;

    template <class Options>
    CLI::App* add(const char* name, const char* help, const Options& options)
    {
        auto* action = command->add_subcommand(name, help);
        actions.emplace_back(action, [&options] { return SettingsOptions(options); });
        return action;
    }

    void addReading()
    {
        auto* action = add("list", "List the settings, their values and which of them are as they came", list);
        action->add_flag("--json", list.json, "Print the list as JSON");
        action->add_flag("--show-secrets", list.showSecrets, kSecrets);
        action->add_flag("--keys", list.keysOnly, "Only the keys");
        action->add_option("--words", list.wordsOf, "Only what can be typed for this setting")->type_name("KEY");
        action = add("get", "Print one setting", get);
        action->add_option("key", get.key, "The setting")->required()->type_name("KEY");
        action->add_flag("--json", get.json, "Print the value as JSON");
        action->add_flag("--show-secrets", get.showSecrets, kSecrets);
    }

    void addWriting()
    {
        auto* action = add("set", "Change one setting", set);
        action->add_option("key", set.key, "The setting")->required()->type_name("KEY");
        action
            ->add_option("value", set.value,
                         "Its new value; - reads it from standard input, which keeps keys out of the shell's history")
            ->required()
            ->type_name("VALUE");
        action = add("reset", "Give settings back the values that they came with", reset);
        auto* keys = action->add_option("keys", reset.keys, "The settings")->type_name("KEY");
        action->add_flag("--all", reset.all, "All of them")->excludes(keys);
    }

    void addExchange()
    {
        auto* action = add("export", "Write what was set as JSON", exported);
        action->add_option("file", exported.file, "Where to; standard output when absent")->type_name("FILE");
        action->add_flag("--show-secrets", exported.showSecrets, kSecrets);
        action->add_flag("--force", exported.force, "Replace a file that exists");
        action = add("import", "Take over settings that were exported; others stay as they are", imported);
        action->add_option("file", imported.file, "Where from; - reads standard input")->required()->type_name("FILE");
        actions.emplace_back(command->add_subcommand("path", "Print where the settings are kept"),
                             [] { return SettingsOptions(SettingsPath()); });
    }
};

SettingsCommandLine::SettingsCommandLine(CLI::App& app) : m_parts(std::make_unique<Parts>())
{
    m_parts->command = app.add_subcommand("settings", "Show and change the settings");
    m_parts->command->require_subcommand(0, 1);
    m_parts->command->footer(kFooter);
    m_parts->addReading();
    m_parts->addWriting();
    m_parts->addExchange();
}

SettingsCommandLine::~SettingsCommandLine() = default;

bool SettingsCommandLine::parsed() const
{
    return m_parts->command->parsed();
}

std::optional<SettingsOptions> SettingsCommandLine::options() const
{
    for (const auto& [action, options] : m_parts->actions) {
        if (action->parsed())
            return options();
    }
    return std::nullopt;
}

} // namespace vocalith
