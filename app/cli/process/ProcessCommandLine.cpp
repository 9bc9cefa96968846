#include "app/cli/process/ProcessCommandLine.h"

#include <CLI/CLI.hpp>

namespace vocalith {
namespace {

constexpr const char* kFooter = R"(
The text comes on standard input and goes to standard output, as your rules make it. Quick commands and scripts are
really carried out, as they are for a dictation.

Examples:
  echo "colour and grey" | vocalith process
  vocalith process --explain < letter.txt
  vocalith scripts show replace-words > tidy.zsh
  echo "Some colour" | vocalith process --before-script tidy.zsh)";

} // namespace

ProcessCommandLine::ProcessCommandLine(CLI::App& app)
    : m_command(app.add_subcommand("process", "Try your rules on a text, without speaking"))
{
    const auto named = [](const std::string& name) { return std::string(name.empty() ? "The name is empty" : ""); };
    const auto script = [this](const char* option, std::string& file, const char* help) {
        return m_command->add_option(option, file, help)->type_name("FILE");
    };
    auto* const prompt = m_command->add_option("-p,--prompt", m_options.prompt,
                                               "The prompt to use; without it the one that dictations use");
    prompt->type_name("NAME")->check(named);
    m_before = script("--before-script", m_beforeScript, "A script to run before the AI, in place of the prompt's");
    m_after = script("--after-script", m_afterScript, "A script to run after the AI, in place of the prompt's");
    m_command->add_flag("--journal", m_options.journal, "Treat it as a dictation for the journal, without a prompt")
        ->excludes(prompt, m_before, m_after);
    m_command->add_flag("--explain", m_options.explain, "Say on standard error what each step did");
    m_command->add_flag("--json", m_options.json, "Print the text and what each step did as JSON");
    m_command->add_flag("--history", m_options.history, "Keep it in the history, as a dictation is kept");
    m_command->footer(kFooter);
}

std::optional<ProcessOptions> ProcessCommandLine::options() const
{
    if (!m_command->parsed())
        return std::nullopt;
    auto options = m_options;
    if (m_before->count() > 0)
        options.beforeScript = m_beforeScript;
    if (m_after->count() > 0)
        options.afterScript = m_afterScript;
    return options;
}

} // namespace vocalith
