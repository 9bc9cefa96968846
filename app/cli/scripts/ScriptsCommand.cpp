#include "app/cli/scripts/ScriptsCommand.h"

#include "app/cli/ExitCode.h"
#include "app/cli/terminal/Terminal.h"
#include "app/cli/text/NearestWord.h"
#include "core/pipeline/scripts/ExampleScripts.h"

#include <fmt/format.h>

namespace vocalith {
namespace {

int print(const std::string& text)
{
    return writeToStandardOutput(text) == 0 ? exitSuccess : exitFailure;
}

int list()
{
    std::string lines;
    for (const auto& example : exampleScripts())
        lines += fmt::format("{:<16}  {}\n", example.name, example.description);
    return print(lines);
}

int show(const std::string& name, Terminal& terminal)
{
    std::vector<std::string> names;
    for (const auto& example : exampleScripts()) {
        if (example.name == name)
            return print(example.script);
        names.push_back(example.name);
    }
    const auto near = nearestWord(name, names);
    terminal.line(fmt::format("{}There is no script \"{}\".{} \"vocalith scripts list\" lists them.",
                              terminal.coloured(Terminal::Colour::red, "Error: "), name,
                              near.empty() ? "" : fmt::format(" Did you mean \"{}\"?", near)));
    return exitFailure;
}

} // namespace

int showScripts(const ScriptsOptions& options, Terminal& terminal)
{
    const auto* shown = std::get_if<ScriptsShowOptions>(&options);
    return shown ? show(shown->name, terminal) : list();
}

} // namespace vocalith
