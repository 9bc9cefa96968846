#include "app/cli/terminal/StandardOutput.h"

#include "app/cli/terminal/Terminal.h"
#include "base/AtomicFile.h"
#include "base/Text.h"
#include "base/Uuid.h"

#include <system_error>

namespace vocalith {

std::string saveUndelivered(const std::filesystem::path& folder, const std::string& text)
{
    const auto file = folder / ("Undelivered-" + Uuid::random().toString() + ".txt");
    return writeFileAtomically(file, text) ? "It was saved in \"" + file.string() + "\"." : std::string();
}

StandardOutput::StandardOutput(Terminal& terminal, std::filesystem::path rescueFolder)
    : m_terminal(terminal), m_rescueFolder(std::move(rescueFolder)),
      m_format([](const std::string& text) { return text; })
{}

Task<Result<TextDestination, TextOutputError>> StandardOutput::deliver(std::string text, ActionMode)
{
    const std::string spoken = trimmed(text);
    m_terminal.clearStatus();
    const int error = writeToStandardOutput(m_format(spoken) + '\n');
    if (error != 0)
        co_return failure(TextOutputError{
            "The text could not be written to standard output: " + std::generic_category().message(error) + ".",
            saveUndelivered(m_rescueFolder, spoken + '\n')});
    co_return TextDestination::application;
}

} // namespace vocalith
