#include "app/cli/shortcuts/ShortcutsCommandLine.h"

#include "base/CaseName.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace vocalith {
namespace {

std::vector<std::string> modes()
{
    std::vector<std::string> names;
    names.reserve(kAllCases<ActivationMode>.size());
    for (const auto mode : kAllCases<ActivationMode>)
        names.emplace_back(caseName(mode));
    return names;
}

} // namespace

ShortcutsCommandLine::ShortcutsCommandLine(CLI::App& app)
    : m_command(app.add_subcommand("shortcuts", "The global shortcuts and their keys")),
      m_set(m_command->add_subcommand("set", "Give a shortcut its keys, or another way to be used")),
      m_clear(m_command->add_subcommand("clear", "Take the keys off a shortcut"))
{
    m_command->require_subcommand(0, 1);
    m_command->add_subcommand("list", "List the shortcuts");
    const char* const which = "main, journal, or the name of a prompt";
    for (auto* const command : {m_set, m_clear})
        command->add_option("which", m_which, which)->required()->type_name("WHICH");
    m_set->add_option("keys", m_keys, "The keys, e.g. Ctrl+Alt+Space or F9; Ctrl+Super for modifier keys alone")
        ->type_name("KEYS");
    m_set->add_option("--mode", m_mode, "automatic, toggle, pushToTalk or doubleTap")
        ->transform(CLI::IsMember(modes(), CLI::ignore_case).description(""))
        ->type_name("MODE");
    m_set->footer("\nautomatic: hold the keys while you speak, or tap them to begin and tap them again to end.");
}

std::optional<ShortcutsOptions> ShortcutsCommandLine::options() const
{
    if (!m_command->parsed())
        return std::nullopt;
    if (m_set->parsed())
        return ShortcutsSetOptions{m_which, m_keys, caseNamed<ActivationMode>(m_mode)};
    if (m_clear->parsed())
        return ShortcutsClearOptions{m_which};
    return ShortcutsListOptions{};
}

} // namespace vocalith
