#include "app/cli/scripts/ScriptsCommandLine.h"

#include <CLI/CLI.hpp>

namespace vocalith {
namespace {

constexpr const char* kFooter = R"(
A prompt can have two scripts for zsh: preAIPromptScript, before the AI, and postAIPromptScript, after it. A script
reads the text from its standard input, and what it prints takes the text's place. When it prints nothing, nothing is
inserted. It has 15 seconds.

Examples:
  vocalith scripts show replace-words > tidy.zsh
  echo "Some colour" | vocalith process --explain --before-script tidy.zsh)";

} // namespace

ScriptsCommandLine::ScriptsCommandLine(CLI::App& app)
    : m_command(app.add_subcommand("scripts", "Example scripts for prompts")),
      m_show(m_command->add_subcommand("show", "Print an example script"))
{
    m_command->require_subcommand(0, 1);
    m_command->add_subcommand("list", "List the example scripts");
    m_command->footer(kFooter);
    m_show->add_option("name", m_name, "The script")->required()->type_name("NAME");
}

std::optional<ScriptsOptions> ScriptsCommandLine::options() const
{
    if (!m_command->parsed())
        return std::nullopt;
    if (m_show->parsed())
        return ScriptsShowOptions{m_name};
    return ScriptsListOptions{};
}

} // namespace vocalith
