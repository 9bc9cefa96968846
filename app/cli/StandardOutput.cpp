#include "app/cli/StandardOutput.h"

#include "app/cli/Terminal.h"
#include "base/AtomicFile.h"
#include "base/Text.h"
#include "base/Uuid.h"

#include <system_error>

namespace vocalith {

StandardOutput::StandardOutput(Terminal& terminal, std::filesystem::path rescueFolder)
    : m_terminal(terminal), m_rescueFolder(std::move(rescueFolder)),
      m_format([](const std::string& text) { return text; })
{}

Task<Result<void, TextOutputError>> StandardOutput::deliver(std::string text)
{
    const std::string spoken = trimmed(text);
    m_terminal.clearStatus();
    const int error = writeToStandardOutput(m_format(spoken) + '\n');
    if (error != 0)
        co_return failure(rescue(spoken, error));
    co_return Result<void, TextOutputError>();
}

TextOutputError StandardOutput::rescue(const std::string& text, int systemError) const
{
    const std::string reason =
        "The text could not be written to standard output: " + std::generic_category().message(systemError) + ".";
    const auto file = m_rescueFolder / ("Undelivered-" + Uuid::random().toString() + ".txt");
    if (!writeFileAtomically(file, text + '\n'))
        return {reason, {}};
    return {reason, "It was saved in \"" + file.string() + "\"."};
}

} // namespace vocalith
